// arguments: one|two words|-x=é
// errors: to errors\+more
WScript.Echo("text", 1, true, null, undefined, [1, 2]);
WScript.Echo();
WScript.StdOut.Write("a", "b");
WScript.StdOut.WriteLine("c");
WScript.StdErr.Write("to errors");
WScript.StdErr.WriteLine("+more");
WScript.Echo(WScript.Arguments.length, WScript.Arguments.Count());
for (var i = 0; i < WScript.Arguments.length; i++) {
  WScript.Echo(WScript.Arguments(i), WScript.Arguments.Item(i));
}
WScript.Echo(WScript.ScriptName, /^\/.*\/wscript\.js$/.test(WScript.ScriptFullName));
WScript.Echo(typeof WScript.NoSuchMember, typeof WScript.OpenFile);
WScript.Echo(WScript.Arguments(2.5));
try { WScript.Arguments(3); } catch (e) { WScript.Echo(e.number, e.description); }
try { WScript.Arguments(-1); } catch (e) { WScript.Echo(e.number, e.description); }
try { WScript.CreateObject("No.Such.Class"); } catch (e) { WScript.Echo(e.number, e.description); }
try { new ActiveXObject(); } catch (e) { WScript.Echo(e.number); }
WScript.Sleep(1);
WScript.Echo("\u00e9 \ud83d\ude00 " + "\ud83d".length);
