var o = new ActiveXObject("Fake.Object");
o.Item(1) = 10;
o.Item(2) += 5;
o . Item /* here */ ( 1 + (2) ) = o.Item(1) = 4;
var name = "Item", text = "o.Item(9) = 1", re = /\) = "/;
o["Item"](4) = o[name](1);
if (re.test(") = ")) WScript.Echo("wrong"); else o.Item(5) = 8;
WScript.Echo(o.Item(1), o.Item(2), o.Item(3), o.Item(4), o.Item(5), text);
try { o.NoSuch(1) = 2; } catch (e) { WScript.Echo(e.number); }
try { o.ReadOnly(1) = 2; } catch (e) { WScript.Echo(e.number); }
var plain = { f: function () { WScript.Echo("not called"); } };
try { plain.f(1) = 2; } catch (e) { WScript.Echo(e instanceof Error); }
