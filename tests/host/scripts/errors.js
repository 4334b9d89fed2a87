function show(e) {
  WScript.Echo(e.name, "|", e.number, "|", e.description, "|", e.message, "|", e instanceof Error);
}
show(new Error());
show(new Error("text"));
show(new Error(5, "text"));
show(new Error(5));
show(Error("called"));
try { undefinedName(); } catch (e) { show(e); }
try { eval("("); } catch (e) { WScript.Echo(e.name, e.number, e instanceof SyntaxError); }
try { decodeURIComponent("%"); } catch (e) { WScript.Echo(e.name, e.number); }
try { new Array(-1); } catch (e) { WScript.Echo(e.name, e.number); }
var e = new Error("m");
e.number = 9;
e.description = "d";
show(e);
WScript.Echo(Error.prototype.constructor === Error, String(new Error(7, "seven")));
var keys = [];
for (var key in new Error(7, "seven")) keys.push(key);
WScript.Echo(keys.length);
