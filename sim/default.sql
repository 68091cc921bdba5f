-- The simulated access point's configuration: one radio and card, four
-- VAPs (ap1 enabled), an open and a WPA2-PSK profile, multicast to unicast,
-- the country, a RADIUS server, VLANs and bridge ports.
INSERT INTO dot11Card VALUES (1, 'RT2860');
INSERT INTO dot11Radio VALUES (1, 'wlan0', 1, 0, 6, '2.4GHz', 'ng', 0, 0, 0, 0);
INSERT INTO dot11Radio11n VALUES (1, '20', 0, 'long');
INSERT INTO dot11Profile (profileName, ssid, broadcastSSID, security, wepAuth, defWepkeyIdx,
  authMethods, pskPassAscii, pairwiseCiphers, groupKeyUpdateInterval, pmksaLifetime,
  preAuthStatus, qosEnable, defaultCos, dscpCosMap0, dscpCosMap1, dscpCosMap2, dscpCosMap3, dscpCosMap4, dscpCosMap5, dscpCosMap6, dscpCosMap7, dscpCosMap8, dscpCosMap9, dscpCosMap10, dscpCosMap11, dscpCosMap12, dscpCosMap13, dscpCosMap14, dscpCosMap15, dscpCosMap16, dscpCosMap17, dscpCosMap18, dscpCosMap19, dscpCosMap20, dscpCosMap21, dscpCosMap22, dscpCosMap23, dscpCosMap24, dscpCosMap25, dscpCosMap26, dscpCosMap27, dscpCosMap28, dscpCosMap29, dscpCosMap30, dscpCosMap31, dscpCosMap32, dscpCosMap33, dscpCosMap34, dscpCosMap35, dscpCosMap36, dscpCosMap37, dscpCosMap38, dscpCosMap39, dscpCosMap40, dscpCosMap41, dscpCosMap42, dscpCosMap43, dscpCosMap44, dscpCosMap45, dscpCosMap46, dscpCosMap47, dscpCosMap48, dscpCosMap49, dscpCosMap50, dscpCosMap51, dscpCosMap52, dscpCosMap53, dscpCosMap54, dscpCosMap55, dscpCosMap56, dscpCosMap57, dscpCosMap58, dscpCosMap59, dscpCosMap60, dscpCosMap61, dscpCosMap62, dscpCosMap63) VALUES
  ('default', 'Guest', 1, 'OPEN', 'Open', 0, 'PSK', '', 'CCMP', 3600, 60, 0, 1, 'Best Effort', 'Default', 'Default', 'Default', 'Default', 'Default', 'Default', 'Default', 'Default', 'Background', 'Default', 'Background', 'Default', 'Background', 'Default', 'Background', 'Default', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice'),
  ('secure', 'Office', 1, 'WPA2', 'Open', 0, 'PSK', 'correct horse battery', 'CCMP', 3600, 60, 0, 1,
   'Best Effort', 'Default', 'Default', 'Default', 'Default', 'Default', 'Default', 'Default', 'Default', 'Background', 'Default', 'Background', 'Default', 'Background', 'Default', 'Background', 'Default', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Video', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice', 'Voice');
INSERT INTO dot11VAP VALUES
  ('ap1', 1, 'default', '1', 32, 100, 1, 2347, 2346, 'Long', 3, 0, 'Open'),
  ('ap2', 0, 'default', '1', 32, 100, 1, 2347, 2346, 'Long', 3, 0, 'Open'),
  ('ap3', 0, 'default', '1', 32, 100, 1, 2347, 2346, 'Long', 3, 0, 'Open'),
  ('ap4', 0, 'default', '1', 32, 100, 1, 2347, 2346, 'Long', 3, 0, 'Open');
INSERT INTO dot11Interface VALUES ('vap0', 'ap1', 1, ''), ('vap1', 'ap2', 1, ''),
  ('vap2', 'ap3', 1, ''), ('vap3', 'ap4', 1, '');
INSERT INTO dot11WPS VALUES ('ap1', 0), ('ap2', 0), ('ap3', 0), ('ap4', 0);
INSERT INTO MulToUni VALUES (1);
INSERT INTO dot11GlobalConfig VALUES ('840');
INSERT INTO radiusClient VALUES ('192.168.1.5', '1812', 'r4dius-secret');
INSERT INTO ipAddressTable VALUES ('127.0.0.1', 2), ('192.168.1.1', 2), ('10.0.0.1', 2);
INSERT INTO vlan VALUES (1, 'dummy'), (20, 'dummy');
INSERT INTO vlanPortMgmt VALUES ('eth0', 'BRIDGE'), ('vap0', 'BRIDGE'), ('vap1', 'BRIDGE');
