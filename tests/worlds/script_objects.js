// Prints the members of the objects that the engine has itself, one a line: object, member.
(function (names) {
  function say(object, value) {
    var found = names(value);
    for (var i = 0; i < found.length; i++) {
      if (found[i] !== "constructor") WScript.Echo(object + "\t" + found[i]);
    }
  }
  function all(value) {
    return value === Object.prototype || value === null ? {} : value;
  }
  var array = new VBArray(new ActiveXObject("Vardeko.crypt.Number").Binary);
  say("Global", globalThis);
  say("WScript", WScript);
  say("Bytes", Bytes);
  say("VBArray", array);
  say("VBArray", all(Object.getPrototypeOf(array)));
  if (typeof Enumerator !== "undefined") say("Enumerator", Enumerator.prototype);
})(Object.getOwnPropertyNames);
