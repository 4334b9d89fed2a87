// The text only reads codePage and only calls HashSize; the code that eval compiles does the other.
var h = new ActiveXObject("Vardeko.crypt.HashObject");
h.InitHash("MD5");
WScript.Echo(h.codePage, h.HashSize());
WScript.Echo(eval("h.codePage()"), eval("h.HashSize + 1"));
WScript.Echo(h.codePage, h.HashSize());
