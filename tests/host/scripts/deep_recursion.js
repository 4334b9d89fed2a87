function down() { down(); }
try { down(); } catch (e) { WScript.Echo(e.name); }
try { WScript.MemoryStream(new Uint8Array(2000000000)); } catch (e) { WScript.Echo(e.message); }
var nested = "";
for (var i = 0; i < 20000; i++) nested += "[";
try { eval(nested); } catch (e) { WScript.Echo(e instanceof Error); }
try { JSON.parse(nested); } catch (e) { WScript.Echo(e instanceof Error); }
var o = {};
for (i = 0; i < 5000; i++) o = { valueOf: (function (x) { return function () { return +x; }; })(o) };
try { +o; } catch (e) { WScript.Echo(e.name); }
