// The text only reads codePage and only calls HashSize; the code that Function compiles does the other.
var h = new ActiveXObject("Vardeko.crypt.HashObject");
h.InitHash("MD5");
WScript.Echo(h.codePage, h.HashSize());
WScript.Echo(new Function("h", "return h.codePage()")(h), Function("h", "return h.HashSize + 1")(h));
WScript.Echo(h.codePage, h.HashSize());
