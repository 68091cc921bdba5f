-- The power-cut loop's fixed database, on top of the simulated access
-- point's: ap2 enabled with the WPA2-PSK profile, one access-list entry and
-- a second RADIUS server to insert.
UPDATE dot11VAP SET vapEnabled=1, profileName='secure' WHERE vapName='ap2';
INSERT INTO dot11ACL VALUES ('ap2', '00:21:6A:11:22:33');
INSERT INTO radiusClient VALUES ('10.0.0.5', '1812', 'another secret');
