WScript.Echo(typeof Duktape, typeof CBOR);
var m = WScript.MemoryStream(new Uint8Array(3));
WScript.Echo(Object.getOwnPropertyNames(m).length, Object.getOwnPropertySymbols(m).length);
WScript.Echo(Object.create(m).Size);
Date.prototype.getTime = null;
Object.prototype.toString = null;
Array.prototype.push = null;
WScript.Echo(typeof WScript.MemoryStream);
