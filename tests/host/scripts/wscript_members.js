// What WScript says about the host, and what it refuses.
function failure(f) {
  try { return "value " + f(); } catch (e) { return e.number + " " + e.description; }
}
WScript.Echo(WScript.Version, WScript.BuildVersion >= 10000, WScript.BuildVersion % 1, WScript.Name, String(WScript));
WScript.Echo(WScript.FullName === WScript.Path + "/mirolta-host", WScript.Path.charAt(0), WScript.fullname.length > 13);
WScript.Echo(WScript.Application === WScript, ScriptEngineBuildVersion() >= 20000);
WScript.Echo(WScript.Interactive, WScript.Timeout);
WScript.TIMEOUT = 0;
WScript.Echo(failure(function () { WScript.Timeout = 32768; }));
WScript.Echo(failure(function () { WScript.Timeout = -1; }));
WScript.Echo(failure(function () { WScript.Version = 6; }));
WScript.Echo(failure(function () { WScript.Nothing = 6; }));
WScript.Echo(failure(function () { WScript.Arguments = 6; }));
WScript.Echo(failure(function () { return GetObject("file.xls"); }));
WScript.Echo(failure(function () { return GetObject("winmgmts:", "Some.Class"); }));
WScript.Echo(failure(function () { return WScript.GetObject(undefined, "Some.Class"); }));
WScript.Echo(failure(function () { return WScript.GetObject(null, "Some.Class"); }));
WScript.Echo(failure(function () { return WScript.GetObject("", "Scripting.Dictionary").Count; }));
WScript.Echo(failure(function () { return GetObject("", "No.Such.Class"); }));
WScript.Echo(failure(function () { return GetObject(); }));
WScript.Echo(failure(function () { return GetObject(""); }));
WScript.Echo(failure(function () { return WScript.CreateObject("Scripting.Dictionary", "on_"); }));
WScript.Echo(failure(function () { return WScript.CreateObject("Scripting.Dictionary", "").Count; }));
WScript.Echo(failure(function () { return WScript.CreateObject("Scripting.Dictionary", undefined).Count; }));
WScript.Echo(failure(function () { return WScript.ConnectObject(WScript, "on_"); }));
WScript.Echo(failure(function () { return WScript.DisconnectObject(WScript); }));
WScript.Echo(failure(function () { return new Enumerator([1, 2]); }));
WScript.Echo(failure(function () { return new Enumerator(undefined); }));
WScript.Echo(failure(function () { return new Enumerator(new ActiveXObject("Scripting.FileSystemObject")); }));
WScript.Echo(failure(function () { return Enumerator.prototype.item.call(WScript.Arguments); }));
WScript.Echo(new Enumerator(WScript.Arguments._NewEnum).atEnd(), Enumerator(WScript.Arguments).atEnd());
function deep() { return 1 + deep(); }
WScript.Echo(failure(deep));
WScript.Echo(failure(function () { return encodeURI("\ud800"); }));
WScript.Echo(failure(function () { return (5)(); }));
WScript.Echo(failure(function () { return new RegExp("["); }));
WScript.Echo(failure(function () { return [].length = -1; }));
