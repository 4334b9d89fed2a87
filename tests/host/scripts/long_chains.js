// Chains of objects in which each holds the last reference to the next are destroyed without deep
// recursion.
var length = 50000, i, previous, next;
for (previous = null, i = 0; i < length; i++) {
  next = new ActiveXObject("Scripting.Dictionary");
  next.Add("previous", previous);
  previous = next;
}
previous = next = null;
CollectGarbage();
WScript.Echo("dictionaries");
for (previous = null, i = 0; i < length; i++) {
  next = new ActiveXObject("Scripting.Dictionary");
  next.Add(previous, "");
  previous = next._NewEnum;
}
previous = next = null;
CollectGarbage();
WScript.Echo("enumerators");
