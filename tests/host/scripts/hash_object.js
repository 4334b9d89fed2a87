// The module itself: found beside the host and registered in memory.
var h = new ActiveXObject("Vardeko.crypt.HashObject");
function attempt(f) {
  try { f(); WScript.Echo("no error"); } catch (e) {
    WScript.Echo(e.number, "|", e.description, "|", e.source);
  }
}
attempt(function () { h.InitHash("sha256"); });
attempt(function () { h.HashData("x"); });
WScript.Echo(h.Value === "" || h.Value === undefined);
h.InitHash("MD5");
h.HashData({ toString: function () { return "abc"; } });
WScript.Echo(h.Value, h, new VBArray(h.BinaryValue).toArray());
attempt(function () { h.HashData({ valueOf: function () { throw new Error(77, "inner"); } }); });
attempt(function () { h.HashData(null); });
attempt(function () { h.Value = "x"; });
attempt(function () { h.NoSuch(); });
attempt(function () { h.codePage = "text"; });
h.codepage = "65001";
WScript.Echo(h.CodePage, h.HashSize, h.BlockSize);
h.HashData(new Uint8Array([97, 98, 99]));
WScript.Echo(h.Value);
h.Key = new Uint8Array([1, 2]);
WScript.Echo(h.Key instanceof Uint8Array, h.Key.length);
var other = WScript.CreateObject("Vardeko.crypt.HashObject.1");
other.InitHash("MD5");
other.HashData(h);
h.ResetKey();
WScript.Echo(other.Value);
