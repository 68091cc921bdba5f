-- The tables wlanSyncTool reads, with the columns it uses.
CREATE TABLE dot11Card (cardNo INTEGER, cardName TEXT);
CREATE TABLE dot11Radio (radioNo INTEGER, interfaceName TEXT, cardNo INTEGER,
  rogueAPEnabled INTEGER, configuredChannel INTEGER, band TEXT, opMode TEXT,
  dothEnabled INTEGER, dothMaxPower INTEGER, dothMarkDfs INTEGER, wdsEnabled INTEGER);
CREATE TABLE dot11Radio11n (radioNo INTEGER, chanWidth TEXT, puren INTEGER, mimoPreamble TEXT);
CREATE TABLE dot11Profile (profileName TEXT, ssid TEXT, broadcastSSID INTEGER,
  security TEXT, wepAuth TEXT, defWepkeyIdx INTEGER,
  wepkey0 TEXT, wepkey1 TEXT, wepkey2 TEXT, wepkey3 TEXT,
  authMethods TEXT, pskPassAscii TEXT, pairwiseCiphers TEXT,
  groupKeyUpdateInterval INTEGER, pmksaLifetime INTEGER, preAuthStatus INTEGER,
  qosEnable INTEGER, defaultCos TEXT,
  dscpCosMap0 TEXT, dscpCosMap1 TEXT, dscpCosMap2 TEXT, dscpCosMap3 TEXT,
  dscpCosMap4 TEXT, dscpCosMap5 TEXT, dscpCosMap6 TEXT, dscpCosMap7 TEXT,
  dscpCosMap8 TEXT, dscpCosMap9 TEXT, dscpCosMap10 TEXT, dscpCosMap11 TEXT,
  dscpCosMap12 TEXT, dscpCosMap13 TEXT, dscpCosMap14 TEXT, dscpCosMap15 TEXT,
  dscpCosMap16 TEXT, dscpCosMap17 TEXT, dscpCosMap18 TEXT, dscpCosMap19 TEXT,
  dscpCosMap20 TEXT, dscpCosMap21 TEXT, dscpCosMap22 TEXT, dscpCosMap23 TEXT,
  dscpCosMap24 TEXT, dscpCosMap25 TEXT, dscpCosMap26 TEXT, dscpCosMap27 TEXT,
  dscpCosMap28 TEXT, dscpCosMap29 TEXT, dscpCosMap30 TEXT, dscpCosMap31 TEXT,
  dscpCosMap32 TEXT, dscpCosMap33 TEXT, dscpCosMap34 TEXT, dscpCosMap35 TEXT,
  dscpCosMap36 TEXT, dscpCosMap37 TEXT, dscpCosMap38 TEXT, dscpCosMap39 TEXT,
  dscpCosMap40 TEXT, dscpCosMap41 TEXT, dscpCosMap42 TEXT, dscpCosMap43 TEXT,
  dscpCosMap44 TEXT, dscpCosMap45 TEXT, dscpCosMap46 TEXT, dscpCosMap47 TEXT,
  dscpCosMap48 TEXT, dscpCosMap49 TEXT, dscpCosMap50 TEXT, dscpCosMap51 TEXT,
  dscpCosMap52 TEXT, dscpCosMap53 TEXT, dscpCosMap54 TEXT, dscpCosMap55 TEXT,
  dscpCosMap56 TEXT, dscpCosMap57 TEXT, dscpCosMap58 TEXT, dscpCosMap59 TEXT,
  dscpCosMap60 TEXT, dscpCosMap61 TEXT, dscpCosMap62 TEXT, dscpCosMap63 TEXT);
CREATE TABLE dot11VAP (vapName TEXT, vapEnabled INTEGER, profileName TEXT, radioList TEXT,
  maxClients INTEGER, beaconInterval INTEGER, dtimInterval INTEGER,
  rtsThreshold INTEGER, fragThreshold INTEGER, preambleMode TEXT, rtsCtsProtect INTEGER,
  apIsolation INTEGER, defACLPolicy TEXT);
CREATE TABLE dot11Interface (interfaceName TEXT, vapName TEXT, radioNo INTEGER, macAddress TEXT);
CREATE TABLE dot11ACL (vapName TEXT, macAddress TEXT);
CREATE TABLE dot11WPS (vapName TEXT, wpsEnabled INTEGER);
CREATE TABLE dot11GlobalConfig (country TEXT);
CREATE TABLE dot11WDSPeers (radioNo INTEGER, macAddress TEXT, wdsIndexNo INTEGER,
  pairwiseCipher TEXT, pskPassAscii TEXT);
CREATE TABLE MulToUni (Enabled INTEGER);
CREATE TABLE radiusClient (authserver TEXT, authport TEXT, authsecret TEXT);
CREATE TABLE ipAddressTable (ipAddress TEXT, addressFamily INTEGER);
CREATE TABLE vlan (vlanId INTEGER, portName TEXT);
CREATE TABLE vlanPortMgmt (PhyInterfaceName TEXT, PortType TEXT);
