// Bytes is a variable like any other, which a script may have of its own.
function say(name, value) {
  WScript.Echo(name + ": " + value);
}

var global = this;
say("enumerable", Object.keys(global).indexOf("Bytes") >= 0);
say("before the first use", Object.getOwnPropertyDescriptor(global, "Bytes").hasOwnProperty("value"));
// The declaration of a script that has the library pasted into it.
var Bytes = Bytes || "pasted";
say("after it", Object.getOwnPropertyDescriptor(global, "Bytes").hasOwnProperty("value"));
say("built in", Bytes.ToHex(Bytes.FromText("a")));
say("the native functions", typeof BytesNatives);
say("enumerable", Object.keys(global).indexOf("Bytes") >= 0);
Bytes = "assigned";
say("assigned", global.Bytes);
delete global.Bytes;
say("deleted", typeof Bytes);
