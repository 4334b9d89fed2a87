// Functions of the language beyond the standard, and what scripts ask about their host.
WScript.Echo(ScriptEngine(), ScriptEngineMajorVersion(), ScriptEngineMinorVersion(),
             typeof ScriptEngineBuildVersion());
WScript.Echo(WScript.Version, typeof WScript.BuildVersion, String(WScript.version >= "5.6"));
WScript.Echo(typeof CollectGarbage, String(CollectGarbage()), typeof GetObject);
var path = WScript.Path, full = WScript.FullName;
WScript.Echo(String(full.substr(0, path.length) === path), String(full.length > path.length + 1));
// wine leaves out: it ends without a word when Interactive is set to true
WScript.Interactive = false;
WScript.Echo("not interactive");
WScript.interactive = true;
WScript.Echo(WScript.Interactive, WScript.Timeout);
// wine continues
WScript.Echo(String(WScript.Application === WScript || typeof WScript.Application === "object"));
WScript.Echo(escape("a b\u00e9\u20ac+/@*_-.,\ud800%&="), unescape("a%20b%E9%u20AC%zz%u12%") === "a b\u00e9\u20ac%zz%u12%" ? "same" : "other");
// wine leaves out: unescape drops the text from a NUL on
WScript.Echo(escape(unescape("%u0000%uD83D%uDE00")));
// wine continues
function fails(f) {
  try { f(); } catch (e) { return String(e.number < 0); }
  return "no error";
}
WScript.Echo(fails(function () { GetObject("no such file"); }),
             fails(function () { WScript.GetObject(undefined, "Scripting.Dictionary"); }),
             fails(function () { WScript.ConnectObject(WScript, "x"); }),
             fails(function () { WScript.DisconnectObject(WScript); }),
             fails(function () { WScript.CreateObject("Scripting.Dictionary", "x_"); }),
             fails(function () { WScript.Name = "x"; }),
             fails(function () { WScript.NoSuchMember = "x"; }),
             fails(function () { WScript.NoSuchMember(); }),
             fails(function () { WScript.CreateObject("No.Such.Class"); }));
WScript.Echo(typeof WScript.NoSuchMember);
// wine leaves out: it compiles conditionally, which is a comment here
/*@cc_on WScript.Echo("compiled conditionally"); @*/
// wine continues
