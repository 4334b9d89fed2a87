// Nothing is registered: classes of the module beside the host are found by CLSID and by ProgID.
var h = new ActiveXObject("{9D56F139-1F04-4283-AED7-3DB89AFF00FD}");
h.InitHash("MD5");
h.HashData("abc");
WScript.Echo(h.Value);
try {
  new ActiveXObject("{00000000-0000-0000-0000-000000000001}");
} catch (e) {
  WScript.Echo(e.description);
}
