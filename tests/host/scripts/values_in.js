var o = new ActiveXObject("Fake.Object");
var kinds = ["empty", "null", "i1", "ui1", "i2", "ui2", "ui4", "i8", "ui8", "r4", "cy", "decimal",
             "error", "missing", "nullobject", "emptytext", "byref"];
for (var i = 0; i < kinds.length; i++) {
  var value = o.Make(kinds[i]);
  WScript.Echo(kinds[i], typeof value, value);
}
var date = o.Make("date");
WScript.Echo(date instanceof Date, date.getTime() === new Date(2000, 0, 1, 12).getTime());
var texts = ["", "a\0b", "\u00e9\u20ac\ud83d\ude00", "\ud800", "\udc00x"];
for (i = 0; i < texts.length; i++) WScript.Echo(o.Same(texts[i]) === texts[i], o.Same(texts[i]).length);
var days = [new Date(1970, 0, 1), new Date(1899, 11, 29, 18), new Date(1600, 1, 29, 1, 2, 3)];
for (i = 0; i < days.length; i++) WScript.Echo(o.Same(days[i]).getTime() - days[i].getTime());
var mine = { a: 1 };
WScript.Echo(o.Same(mine) === mine, o.Same(true), o.Same(null), o.Same(undefined));
var plain = o.Make("plainobject");
WScript.Echo(typeof plain, o.Describe(plain));
try { o.Make("record"); } catch (e) { WScript.Echo(e.number, e.description); }
