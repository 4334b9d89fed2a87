// arguments: one|two words|/name:value|/flag|-x=1
// The arguments of a script.
var args = WScript.Arguments;
WScript.Echo(args.length, args.Count(), WScript.arguments.LENGTH);
for (var i = 0; i < args.length; i++) WScript.Echo(args(i) + "|" + args.Item(i) + "|" + args.item(i));
WScript.Echo(args("1"), args(0.5), args(1.5), args.Item(2.5));
function fails(f) {
  try { f(); } catch (e) { return e instanceof Error && e.number < 0; }
  return false;
}
WScript.Echo(String(fails(function () { args(5); })), String(fails(function () { args(-1); })),
             String(fails(function () { args("x"); })), String(fails(function () { args.Item(); })));
// wine leaves out: its arguments have no Named, no Unnamed and cannot be enumerated
WScript.Echo(args.Named.Count(), args.Named("NAME"), args.Named.Exists("flag"), args.Unnamed(1));
for (var e = new Enumerator(args); !e.atEnd(); e.moveNext()) WScript.Echo(e.item());
// wine continues
