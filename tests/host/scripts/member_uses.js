// Members with type information. The script compiles no code: the host knows its calls and reads by
// its text. Each name is used in the way of its row only.
var h = new ActiveXObject("Vardeko.crypt.HashObject"), g = new ActiveXObject("Vardeko.crypt.HashObject");
var n = new ActiveXObject("Vardeko.crypt.Number"), rsa = new ActiveXObject("Vardeko.crypt.RSA");
function attempt(f) {
  try { return f(); } catch (e) { return e.number + " " + e.description; }
}
// Only called: methods, and properties with and without an argument
h.InitHash("MD5");
g.InitHash("SHA256");
h.HashData("abc");
g.HashData("abc");
n.value = 5;
WScript.Echo(h.HashSize(), g.HashSize(), h.hashsize(), n.Text(65001).length);
for (var i = 0; i < 3; i++) WScript.Echo(i, (i === 1 ? g : h).HashSize());
// Only read
WScript.Echo(h.codePage, g.codePage, h.CODEPAGE, h.Value, g.Value);
h.codePage = 65001;
WScript.Echo(h.codePage, g.codePage, h.CODEPAGE);
// Called and read
WScript.Echo(h.BlockSize, h.BlockSize(), n.Hex, n.Hex());
// A method that is read is bound to its object.
var reset = h.Reset, add = n.Add;
WScript.Echo(typeof reset, typeof reset(), add(2).value, add.call(null, 3).value, n.Add(4).value);
// Errors of both kinds of access
WScript.Echo(attempt(function () { return h.NoSuch; }), attempt(function () { return h.NoSuchCalled(1); }));
WScript.Echo(attempt(function () { return g.Key(1, 2, 3); }));
WScript.Echo(attempt(function () { return rsa.M; }));
WScript.Echo(attempt(function () { g.InitHash("none"); }));
WScript.Echo(attempt(function () { g.InitHash(); }));
// Results of every kind, by reads and by calls
WScript.Echo(typeof h.BinaryValue, typeof n.NewNumber(1), n.Cmp(5), n.Sub(2).value);
WScript.Echo(typeof h.Reset(), String(n), n + 1);
