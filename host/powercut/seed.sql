-- The power-cut loop's start, on top of the simulated access point's: ap2
-- disabled, with the WPA2-PSK profile the loop's start of it applies.
UPDATE dot11VAP SET vapEnabled=0, profileName='secure' WHERE vapName='ap2';
