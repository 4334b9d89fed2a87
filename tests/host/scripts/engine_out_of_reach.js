WScript.Echo(typeof Duktape, typeof CBOR);
var m = WScript.MemoryStream(new Uint8Array(3));
WScript.Echo(Object.getOwnPropertyNames(m).length, Object.getOwnPropertySymbols(m).length);
try { WScript.Echo(Object.create(m).Size); } catch (e) { WScript.Echo(e.number); }
WScript.Echo(m.Size, WScript.MemoryStream().Size, m.Size);
Date.prototype.getTime = null;
Object.prototype.toString = null;
Array.prototype.push = null;
WScript.Echo(typeof WScript.MemoryStream);
