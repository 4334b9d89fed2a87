// arguments: first|/name:value|/NAME:second|/flag|/on+|/off-|/empty:|/colons:a:b|/home/me/file|/|/:v|/+|-x=1|/ünï:é
// The forms of arguments, and what their collections give.
var args = WScript.Arguments, named = args.Named, unnamed = args.Unnamed;
WScript.Echo(args === WScript.arguments, args.Count, args.Count(), args.length, args.length());
WScript.Echo(named.Count, named.Count(), named.length, unnamed.Count, unnamed.Count(), unnamed.length);
for (var e = new Enumerator(named); !e.atEnd(); e.moveNext()) {
  var value = named.Item(e.item());
  WScript.Echo(e.item(), typeof value, value === named(e.item()), value);
}
for (e = new Enumerator(unnamed); !e.atEnd(); e.moveNext()) WScript.Echo(e.item());
for (var i = 0; i < unnamed.length; i++) WScript.Echo(unnamed(i), args.Unnamed(i), unnamed.ITEM(i));
WScript.Echo(named("Name"), named.exists("NAME"), named.Exists("none"), typeof named("none"),
             args.Named("flag"), args.named("ON"));
function failure(f) {
  try { return f(); } catch (e) { return e.number + " " + e.description; }
}
WScript.Echo(failure(function () { return args(14); }));
WScript.Echo(failure(function () { return args(-1); }));
WScript.Echo(failure(function () { return args(1e300); }));
WScript.Echo(failure(function () { return args(NaN); }));
WScript.Echo(failure(function () { return args(null); }));
WScript.Echo(failure(function () { return args({}); }));
WScript.Echo(failure(function () { return args(0, 1); }));
WScript.Echo(failure(function () { return unnamed(99); }));
WScript.Echo(failure(function () { return named(null); }));
WScript.Echo(failure(function () { return named.Exists(); }));
WScript.Echo(failure(function () { args.length = 5; return "assigned"; }));
WScript.Echo(failure(function () { WScript.Arguments = 5; return "assigned"; }));
WScript.Echo(args({ valueOf: function () { return 13; } }), named({ toString: function () { return "on"; } }));
args.ShowUsage();
