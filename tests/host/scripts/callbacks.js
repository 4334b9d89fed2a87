var o = new ActiveXObject("Fake.Object");
WScript.Echo(o.CallBack(function (x) { return x + 1; }));
WScript.Echo(o.CallBack({ member: function (x) { return this.prefix + x; }, prefix: "m" }));
try { o.CallBack({}); } catch (e) { WScript.Echo(e.number); }
try { o.CallBack(function () { throw new Error(77, "from inside"); }); } catch (e) { WScript.Echo(e.number, e.description); }
var depth = 0;
function again() { depth++; o.CallBack(again); }
try { again(); } catch (e) { WScript.Echo(e.number, e.description, depth > 10); }
WScript.Echo(o.CallBack(function () { o = null; return "let go meanwhile"; }));
