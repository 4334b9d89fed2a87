// The cases of lib/bytes.js, on each kind of host: built in, pasted into a script, and pasted on a host
// without arrays of bytes, whose MSXML is played where there is none. Prints the results of the first,
// and what differs from them.

function libraryText() {
  var path = WScript.ScriptFullName.replace(/[^\\\/]*$/, "../../../lib/bytes.js");
  if (typeof WScript.OpenFile === "undefined") {
    return new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(path).ReadAll();
  }
  return String.fromCharCode.apply(null, WScript.OpenFile(path, "r").Read(65536));
}

function pasted() {
  eval(libraryText());
  return Bytes;
}

// An element of type bin.hex. Its bytes are the module's, made and read with a byte in front that keeps
// zero bytes.
function PlayedElement() {}
if (typeof Uint8Array !== "undefined") {
  Object.defineProperty(PlayedElement.prototype, "nodeTypedValue", {
    get: function () {
      var numbers = [];
      for (var i = 0; i < this.text.length; i += 2) numbers.push(parseInt(this.text.substr(i, 2), 16));
      return new Uint8Array(numbers);
    },
    set: function (bytes) {
      this.text = "";
      if (bytes === undefined) throw new Error("no bytes");
      for (var i = 0; i < bytes.length; i++) this.text += (bytes[i] + 256).toString(16).substr(1);
    }
  });
}

function PlayedClass(name) {
  if (name !== "MSXML2.DOMDocument") return new ActiveXObject(name);
  return {createElement: function () { return new PlayedElement(); }};
}

function withoutByteArrays() {
  // Where bytes are arrays of automation typeof gives another word for them.
  var text = libraryText().replace("typeof value;", "value instanceof Bytes_ ? \"unknown\" : typeof value;");
  return new Function("Uint8Array", "ActiveXObject", "Bytes_", text + "\nreturn Bytes;")(
    undefined, PlayedClass, Uint8Array);
}

function implementations() {
  var all = {};
  if (typeof WScript.OpenFile !== "undefined") all["built in"] = Bytes;
  all.pasted = pasted();
  if (typeof Uint8Array !== "undefined") all["without byte arrays"] = withoutByteArrays();
  return all;
}

// The code units of a text.
function units(text) {
  var result = [];
  for (var i = 0; i < text.length; i++) result.push(text.charCodeAt(i).toString(16));
  return result.join(" ");
}

function repeated(text, times) {
  var result = "";
  for (var i = 0; i < times; i++) result += text;
  return result;
}

var MIXED = "a\u0000\u00e9\u20ac\ud83d\ude00";

// Each returns a text, or fails.
function casesOf(B) {
  function hex(digits) { return B.FromHex(digits); }
  function shown(bytes) { return "[" + B.ToHex(bytes) + "]"; }
  function text(text, codePage) {
    return function () { return shown(B.FromText(text, codePage)); };
  }
  function back(digits, codePage) {
    return function () { return units(B.ToText(hex(digits), codePage)); };
  }
  function fromHex(digits) {
    return function () { return shown(hex(digits)); };
  }
  function base64(digits) {
    return function () { return shown(B.FromBase64(digits)); };
  }
  function fromArray(numbers) {
    return function () { return shown(B.FromArray(numbers)); };
  }
  function slice(start, end) {
    return function () { return shown(B.Slice(hex("0001020304"), start, end)); };
  }
  function wrong(value) {
    return function () { return B.ToHex(value); };
  }
  return {
    "UTF-8": text(MIXED),
    "UTF-8 of lone surrogates": text("\ud800x\udc00\udc00\ud800\uffff\ud800\ud800"),
    "UTF-8 by its number": text("\u00e9", 65001),
    "UTF-8 at its limits": text("\u007f\u0080\u07ff\u0800\uffff\ud800\udc00\udbff\udfff"),
    "UTF-8 back": back("6100c3a9e282acf09f9880"),
    "UTF-8 back at its limits": back("7fc280dfbfe0a080efbfbff0908080f48fbfbf"),
    "UTF-8 too long": back("c0afc1bfe080aff08080af"),
    "UTF-8 of surrogates": back("eda080edbfbf"),
    "UTF-8 beyond the last": back("f4908080f5fe"),
    "UTF-8 cut short": back("e28041f09f98c3e2"),
    "UTF-8 without a start": back("80bf41"),
    "byte order mark": back("efbbbf41"),
    "code page 1252": text("\u20ac\u0000\u00e9\u4e00", 1252),
    "code page 1252 back": back("80004100e900", 1252),
    "code page 932": text("\u3042", 932),
    "code page 932 back": back("82a00000", 932),
    "code page 28591": text("\u0000\u0001\u00ff", 28591),
    "UTF-16 little-endian": text(MIXED, -1),
    "UTF-16 big-endian": text(MIXED, -2),
    "UTF-16 little-endian back": back("423000003dd8", -1),
    "UTF-16 big-endian back": back("304200000041", -7),
    "UTF-16 of an odd length": back("304200", -1),
    "no such code page": text("a", 12345),
    "no such code page back": back("41", 12345),
    "nothing in any code page": text("", 12345),
    "code page of another type": text("a", "x"),
    "code page with a fraction": text("a", 1.5),
    "text of another type": text(5),
    "a long text": function () {
      return B.ToText(B.FromText(repeated("\u00e9", 10000))) === repeated("\u00e9", 10000);
    },

    "hexadecimal": fromHex("00ff10aBCd"),
    "hexadecimal with white space": fromHex(" 00 ff\r\n10\t"),
    "no hexadecimal": fromHex(""),
    "white space only": fromHex(" \n"),
    "odd digits": fromHex("00F"),
    "odd digits before a space": fromHex("0 0f"),
    "no digit": fromHex("00xf"),
    "half a byte and no digit": fromHex("0x"),
    "a control character": fromHex("00\u0000"),
    "a character beyond ASCII": fromHex("00\u0131"),
    "hexadecimal of another type": fromHex(undefined),

    "base64 of 0": base64(""),
    "base64 of 1": base64("AA=="),
    "base64 of 2": base64("//8="),
    "base64 of 3": base64("+/Ab"),
    "base64 of 7": base64("AAECAwQFBg=="),
    "base64 with white space": base64(" AA\nE\tC\r\n"),
    "base64 with spaces in the padding": base64("A A = = "),
    "to base64": function () {
      var bytes = hex("00fbf0ff0102"), list = [];
      for (var i = 0; i <= 6; i++) list.push(B.ToBase64(B.Slice(bytes, 0, i)));
      return list.join(",");
    },
    "base64 of every byte": function () {
      var numbers = [], bytes;
      for (var i = 0; i < 256; i++) numbers.push(i);
      bytes = B.FromArray(numbers);
      return B.Equal(B.FromBase64(B.ToBase64(bytes)), bytes) && B.Equal(hex(B.ToHex(bytes)), bytes);
    },
    "no base64 character": base64("AA%="),
    "base64 for addresses": base64("-_AA"),
    "base64 beyond ASCII": base64("AA\u00e9="),
    "no padding": base64("AA"),
    "one digit": base64("AAAAA"),
    "padding of one digit": base64("A==="),
    "too little padding": base64("AA="),
    "too much padding": base64("AA==="),
    "padding alone": base64("===="),
    "padding first": base64("=AAA"),
    "a digit after the padding": base64("AA=A"),
    "a second text": base64("AA==AA=="),
    "spare bits of two digits": base64("AB=="),
    "spare bits of three digits": base64("AAB="),

    "array": fromArray([0, 1, 127, 128, 255]),
    "array of nothing": fromArray([]),
    "array above a byte": fromArray([0, 256]),
    "array below zero": fromArray([-1]),
    "array with a fraction": fromArray([0.5]),
    "array of text": fromArray(["1"]),
    "array with a gap": fromArray([1, , 2]),
    "no array": fromArray("abc"),
    "no array at all": fromArray(null),
    "to array": function () { return B.ToArray(hex("00ff7f")).join(","); },
    "to array of nothing": function () { return B.ToArray(hex("")).length; },

    "count": function () { return B.Count(hex("000000")) + "," + B.Count(hex("")); },
    "slice from 0": slice(),
    "slice from 1": slice(1),
    "slice of the end": slice(-2),
    "slice without the end": slice(1, -1),
    "slice beyond": slice(-99, 99),
    "slice of nothing": slice(3, 1),
    "slice at a fraction": slice(0.5),
    "slice at a text": slice("1"),
    "a slice is a copy": function () {
      var bytes = hex("0001"), copy = B.Slice(bytes, 0);
      if (typeof Uint8Array !== "undefined" && copy instanceof Uint8Array) copy[0] = 9;
      return shown(bytes);
    },
    "concat": function () { return shown(B.Concat(hex("00"), hex(""), hex("0102"))); },
    "concat of nothing": function () { return shown(B.Concat()); },
    "concat of text": function () { return shown(B.Concat(hex("00"), "01")); },
    "equal": function () { return B.Equal(hex("00ff"), hex("00FF")); },
    "equal and empty": function () { return B.Equal(hex(""), hex("")); },
    "different at the start": function () { return B.Equal(hex("00ff00"), hex("01ff00")); },
    "different at the end": function () { return B.Equal(hex("00ff00"), hex("00ff80")); },
    "different counts": function () { return B.Equal(hex("00ff"), hex("00ff00")); },
    "equal to a text": function () { return B.Equal(hex("00"), "00"); },
    "xor": function () { return shown(B.Xor(hex("00ff55"), hex("f0ffaa"))); },
    "xor of nothing": function () { return shown(B.Xor(hex(""), hex(""))); },
    "xor of different counts": function () { return shown(B.Xor(hex("00"), hex("0000"))); },
    "random": function () {
      return [B.Count(B.Random(0)), B.Count(B.Random(1)), B.Count(B.Random(33))].join(",");
    },
    "random twice": function () { return B.Equal(B.Random(16), B.Random(16)); },
    // A bit that is never set, or always, would be seen in 999 of 1000 bytes.
    "random bits": function () {
      var numbers = B.ToArray(B.Random(1000)), any = 0, all = 255;
      for (var i = 0; i < numbers.length; i++) {
        any |= numbers[i];
        all &= numbers[i];
      }
      return any + "," + all;
    },
    "random first byte": function () {
      var any = 0, all = 255, first;
      for (var i = 0; i < 40; i++) {
        first = B.ToArray(B.Random(1))[0];
        any |= first;
        all &= first;
      }
      return any + "," + all;
    },
    "random below zero": function () { return B.Random(-1); },
    "random with a fraction": function () { return B.Random(0.5); },
    "random without end": function () { return B.Random(Infinity); },
    "too much at random": function () { return B.Random(16777217); },

    "a text is no bytes": wrong("00"),
    "a number is no bytes": wrong(5),
    "null is no bytes": wrong(null),
    "undefined is no bytes": wrong(undefined),
    "an object is no bytes": wrong({}),
    "an array is no bytes": wrong([1]),
    "a boolean is no bytes": wrong(true),

    "bytes of a class": function () {
      var hash = new ActiveXObject("Vardeko.crypt.HashObject");
      hash.InitHash("MD5");
      hash.HashData(hex("00ff100007"));
      return shown(hash.BinaryValue);
    },
    "a key with zero bytes": function () {
      var crypt = new ActiveXObject("Vardeko.crypt.Symmetric");
      crypt.Init("AES");
      crypt.Key = hex("00000000000000000000000000000000");
      return shown(crypt.Key) + shown(crypt.Encrypt(hex("00000000000000000000000000000000")));
    }
  };
}

function outcome(work) {
  try {
    return String(work());
  } catch (e) {
    return "error " + e.number + ", " + e.description;
  }
}

var all = implementations(), first = null, line, name, cases, key;
for (name in all) {
  cases = casesOf(all[name]);
  if (first === null) first = {};
  for (key in cases) {
    line = key + ": " + outcome(cases[key]);
    if (!first.hasOwnProperty(key)) {
      first[key] = line;
      WScript.Echo(line);
    } else if (first[key] !== line) {
      WScript.Echo(name + ", " + line);
    }
  }
}
