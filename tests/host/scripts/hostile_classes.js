// arguments: x|/a:b|/on+
// Every member of the host's classes with hostile arguments: each call ends in a value or an error.
var text = "";
for (var i = 0; i < 12; i++) text += text || "x\u0000\ud800\u00e9";
function callback() {
  callback.count++;
  if (callback.count % 50 === 0) CollectGarbage();
  return "1";
}
callback.count = 0;
function makeValues(own) {
  return [
    undefined, null, true, 0, -1, 1, 2147483647, -2147483648, 4294967296, 1e300, -1e300, NaN, Infinity, 0.5,
    "", "1", "\u0000", "\ud800", "a\u0000b", text, [], [1, [2]], {}, callback, new Date(0), new Date(NaN),
    new Uint8Array(3), new Error(5, "x"), /x/, own, WScript, WScript.Arguments, own.constructor,
    { toString: callback, valueOf: callback },
    { toString: function () { throw new Error(77, "thrown"); } },
    { valueOf: function () { return {}; }, toString: function () { return {}; } },
    { toString: function () { CollectGarbage(); WScript.Arguments.Named("x"); return "own"; } },
    (function () { var o = {}; o.toString = function () { return own.Count + ""; }; return o; })()
  ];
}
var statistics = { calls: 0, errors: 0, numbered: 0 };
function attempt(f) {
  statistics.calls++;
  try { return f(); } catch (e) {
    statistics.errors++;
    if (typeof e !== "object" || typeof e.number === "number") statistics.numbered++;
  }
}
function attack(make, names) {
  var values = makeValues(make());
  for (var n = 0; n < names.length; n++) {
    for (var v = 0; v < values.length; v++) {
      var object = make(), name = names[n], value = values[v];
      attempt(function () { return object[name]; });
      attempt(function () { return object[name](); });
      attempt(function () { return object[name](value); });
      attempt(function () { return object[name](value, value); });
      attempt(function () { return object[name](value, value, value, value, value); });
      attempt(function () { object[name] = value; });
      attempt(function () { return object(value) + "" + object; });
      attempt(function () { return new object[name](value); });
      attempt(function () { return object[name].call(value, value); });
      attempt(function () { return new Enumerator(object[name]).item(); });
      attempt(function () { delete object[name]; });
      attempt(function () { return value in object; });
    }
  }
  WScript.Echo(names.length + " members: each call ends in a value or an error");
}
var collection = ["Item", "Count", "length", "_NewEnum", "Named", "Unnamed", "Exists", "nothing", "", "\ud800", "constructor"];
attack(function () { return WScript.Arguments; }, collection);
attack(function () { return WScript.Arguments.Named; }, collection);
attack(function () { return WScript.Arguments.Unnamed; }, collection);
attack(function () { return new ActiveXObject("Scripting.Dictionary"); },
       ["Add", "Item", "Items", "Keys", "Key", "Exists", "Remove", "RemoveAll", "CompareMode", "Count", "_NewEnum"]);
// References that form a cycle are never released by themselves, so the script opens each cycle it made.
var cyclic = [];
attack(function () {
  var d = new ActiveXObject("Scripting.Dictionary");
  d.Add("a", d);
  d.Add(d, "b");
  cyclic.push(d);
  return d;
}, ["Add", "Item", "Items", "Keys", "Key", "Remove", "_NewEnum"]);
for (i = 0; i < cyclic.length; i++) cyclic[i].RemoveAll();
cyclic = [];
attack(function () { var s = new ActiveXObject("ADODB.Stream"); s.Open(); return s; },
       ["Write", "WriteText", "Read", "ReadText", "Position", "Size", "SetEOS", "EOS", "Type", "Charset", "LineSeparator",
        "CopyTo", "Flush", "Mode", "State", "SkipLine", "Cancel", "Close"]);
attack(function () { return new ActiveXObject("ADODB.Stream"); }, ["Open", "Write", "Read", "Position", "Size", "Close"]);
attack(function () { return new ActiveXObject("Scripting.FileSystemObject"); },
       ["BuildPath", "GetFileName", "GetBaseName", "GetExtensionName", "GetParentFolderName", "FileExists", "FolderExists",
        "DriveExists", "GetDriveName", "GetTempName", "GetAbsolutePathName", "GetSpecialFolder", "GetStandardStream"]);
attack(function () { return new ActiveXObject("WScript.Shell"); },
       ["ExpandEnvironmentStrings", "Environment", "SpecialFolders", "nothing"]);
attack(function () { return new Enumerator(WScript.Arguments); }, ["atEnd", "item", "moveFirst", "moveNext", "constructor"]);
attack(function () { return new VBArray(new Uint8Array(3)); }, ["dimensions", "lbound", "ubound", "getItem", "toArray"]);
attack(function () { return new Date(0); }, ["getVarDate", "getTime", "setTime"]);
attack(function () { return Date; }, ["parse", "UTC"]);
attack(function () { return Error; }, ["prototype", "name"]);
attack(function () { return new Error(1, "x"); }, ["number", "description", "message", "toString"]);
attack(function () { return { get: GetObject, major: ScriptEngineMajorVersion, error: Error, date: Date, enumerator: Enumerator }; },
       ["get", "major", "error", "date", "enumerator"]);
attack(function () { return { create: WScript.CreateObject, connect: WScript.ConnectObject, get: WScript.GetObject }; },
       ["create", "connect", "get"]);

// A dictionary that contains itself, deep recursion, and objects that outlive what they came from.
var chain = new ActiveXObject("Scripting.Dictionary"), first = chain;
for (i = 0; i < 2000; i++) {
  var next = new ActiveXObject("Scripting.Dictionary");
  chain.Add("next", next);
  chain = next;
}
chain.Add("next", first);
first.Remove("next");
first = chain = next = null;
CollectGarbage();
function deeper(n) { return new Enumerator(WScript.Arguments).atEnd() + deeper(n + 1); }
try { deeper(0); } catch (e) { WScript.Echo("deep: " + e.number); }
var values = new ActiveXObject("Scripting.Dictionary");
for (i = 0; i < 100; i++) values.Add(i, i);
var walk = new Enumerator(values);
values.RemoveAll();
values = null;
CollectGarbage();
for (var seen = 0; !walk.atEnd(); walk.moveNext()) seen++;
WScript.Echo("seen after RemoveAll: " + (seen <= 100));
WScript.Echo(statistics.calls > 10000, statistics.errors > 1000, statistics.errors === statistics.numbered);
