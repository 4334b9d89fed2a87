// SPDX-License-Identifier: MIT
// Bytes for people: text, hexadecimal and base64 to bytes and back, the same on every script host.
//
//   Bytes.FromText(text, codePage)    Bytes.ToText(bytes, codePage)    code page 65001, UTF-8, if omitted
//   Bytes.FromHex(text)               Bytes.ToHex(bytes)
//   Bytes.FromBase64(text)            Bytes.ToBase64(bytes)
//   Bytes.FromArray(numbers)          Bytes.ToArray(bytes)
//   Bytes.Count(bytes)                Bytes.Equal(bytes, bytes)
//   Bytes.Slice(bytes, start, end)    Bytes.Concat(bytes, ...)
//   Bytes.Xor(bytes, bytes)           Bytes.Random(count)
//
// Bytes are what the members of the classes take and return: a byte array of automation, which a script
// of the platform's own host can neither make nor read, or a Uint8Array where the engine has them.
// Bytes.FromArray and ToArray convert these to and from arrays of numbers, and all else is made of
// those: on the platform's host by MSXML, elsewhere by the engine. Code pages other than UTF-8 and
// UTF-16, and random bytes, come from the classes of Mirolta.
//
// mirolta-host has this file built in. For other hosts paste it into a script, or evaluate it:
//
//   eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile("bytes.js").ReadAll());
//
// docs/bytes.md describes the members.

var Bytes = Bytes || (function (natives) {
  var UTF8 = 65001;
  var REPLACEMENT = 0xFFFD;
  var INVALID_CALL = -2146828283;  // 0x800A0005
  var CHARACTERS_AT_ONCE = 4096;
  var HEX_DIGITS = "0123456789abcdef";
  var BASE64_DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  // An engine may have such arrays without using them for those of automation.
  var hasByteArrays = natives !== null || typeof Uint8Array !== "undefined" &&
                      new ActiveXObject("Vardeko.crypt.Number").Binary instanceof Uint8Array;
  var codeOfDigit = {};
  var hexOfByte = [];

  function fail(member, text) {
    var error = new Error(INVALID_CALL, "Bytes." + member + ": " + text);
    if (natives !== null) natives.blameCaller(error);
    throw error;
  }

  (function () {
    var i;
    for (i = 0; i < 64; i++) codeOfDigit[BASE64_DIGITS.charAt(i)] = i;
    for (i = 0; i < 256; i++) hexOfByte[i] = HEX_DIGITS.charAt(i >> 4) + HEX_DIGITS.charAt(i & 15);
  })();

  // Arguments.

  // The type of a value; a host may have none for a byte array.
  function typeName(value) {
    try {
      return value === null ? "null" : typeof value;
    } catch (e) {
      return "unknown";
    }
  }

  function takeText(member, value) {
    if (typeName(value) !== "string") fail(member, "the argument is no text");
    return value;
  }

  function takeCodePage(member, value) {
    if (value === undefined) return UTF8;
    if (typeName(value) !== "number" || value !== Math.floor(value) || Math.abs(value) > 0x7FFFFFFF) {
      fail(member, "the code page is no whole number");
    }
    return value;
  }

  // Refuses what is certainly no byte array, and returns the value.
  function takeBytes(member, value) {
    if (!hasByteArrays) {
      if (/^(string|number|boolean|object|function|undefined|null)$/.test(typeName(value))) {
        fail(member, "the argument is no byte array");
      }
      return value;
    }
    if (value instanceof ArrayBuffer) return new Uint8Array(value);
    if (!(value instanceof Uint8Array)) fail(member, "the argument is no byte array");
    return value;
  }

  function takeCount(member, value, most) {
    if (typeName(value) !== "number" || value !== Math.floor(value) || value < 0 || value > most) {
      fail(member, "the count is no whole number from 0 to " + most);
    }
    return value;
  }

  // A position as Array.slice takes it.
  function takePosition(member, value, count, otherwise) {
    if (value === undefined) return otherwise;
    if (typeName(value) !== "number" || value !== Math.floor(value)) {
      fail(member, "the position is no whole number");
    }
    return value < 0 ? Math.max(0, count + value) : Math.min(value, count);
  }

  // A character as messages show it.
  function shown(text, index) {
    var code = text.charCodeAt(index);
    if (code > 32 && code < 127) return "\"" + text.charAt(index) + "\"";
    return "U+" + (code + 0x10000).toString(16).substr(1).toUpperCase();
  }

  function isSpace(c) {
    return c === " " || c === "\n" || c === "\r" || c === "\t";
  }

  // Bytes from and to numbers.

  var keptElement = null;

  function binaryElement() {
    if (keptElement === null) {
      keptElement = new ActiveXObject("MSXML2.DOMDocument").createElement("bytes");
      keptElement.dataType = "bin.hex";
    }
    return keptElement;
  }

  // Makes bytes of numbers from 0 to 255.
  function make(numbers) {
    if (hasByteArrays) return new Uint8Array(numbers);
    // An element without content has no value of this type.
    if (numbers.length === 0) return new ActiveXObject("Vardeko.crypt.Number").Binary;
    var element = binaryElement();
    element.text = hexOf(numbers);
    return element.nodeTypedValue;
  }

  // The numbers of a byte array: an array, or what is used like one.
  function numbersOf(member, bytes) {
    bytes = takeBytes(member, bytes);
    if (hasByteArrays) return bytes;
    var element = binaryElement(), hex, numbers = [], i;
    try {
      element.nodeTypedValue = bytes;
      hex = element.text;
    } catch (e) {
      fail(member, "the argument is no byte array");
    }
    for (i = 0; i < hex.length; i += 2) numbers[i / 2] = parseInt(hex.substr(i, 2), 16);
    return numbers;
  }

  // Text.

  // The text of many code units.
  function textOf(units) {
    if (units.length <= CHARACTERS_AT_ONCE) return String.fromCharCode.apply(null, units);
    var parts = [], i;
    for (i = 0; i < units.length; i += CHARACTERS_AT_ONCE) {
      parts.push(String.fromCharCode.apply(null, units.slice(i, i + CHARACTERS_AT_ONCE)));
    }
    return parts.join("");
  }

  function utf16Of(text, isBigEndian) {
    var numbers = [], i, unit;
    for (i = 0; i < text.length; i++) {
      unit = text.charCodeAt(i);
      numbers.push(isBigEndian ? unit >> 8 : unit & 255, isBigEndian ? unit & 255 : unit >> 8);
    }
    return numbers;
  }

  function textOfUtf16(numbers, isBigEndian) {
    var units = [], i;
    if (numbers.length % 2 !== 0) {
      fail("ToText", numbers.length + " bytes, an odd number, are no UTF-16");
    }
    for (i = 0; i < numbers.length; i += 2) {
      units.push(isBigEndian ? numbers[i] << 8 | numbers[i + 1] : numbers[i + 1] << 8 | numbers[i]);
    }
    return textOf(units);
  }

  // The character at an index: a lone surrogate is replaced.
  function characterAt(text, i) {
    var first = text.charCodeAt(i), second;
    if (first < 0xD800 || first > 0xDFFF) return first;
    second = first < 0xDC00 && i + 1 < text.length ? text.charCodeAt(i + 1) : 0;
    if (second < 0xDC00 || second > 0xDFFF) return REPLACEMENT;
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
  }

  // RFC 3629, section 3.
  function utf8Of(text) {
    var numbers = [], i, c;
    for (i = 0; i < text.length; i++) {
      c = characterAt(text, i);
      if (c < 0x80) {
        numbers.push(c);
      } else if (c < 0x800) {
        numbers.push(0xC0 | c >> 6, 0x80 | c & 63);
      } else if (c < 0x10000) {
        numbers.push(0xE0 | c >> 12, 0x80 | c >> 6 & 63, 0x80 | c & 63);
      } else {
        numbers.push(0xF0 | c >> 18, 0x80 | c >> 12 & 63, 0x80 | c >> 6 & 63, 0x80 | c & 63);
        i++;
      }
    }
    return numbers;
  }

  // Each maximal part of a character that is not continued becomes one replacement character (Unicode
  // 3.9, "U+FFFD Substitution of Maximal Subparts").
  function textOfUtf8(numbers) {
    var units = [], more = 0, c = 0, least = 0x80, most = 0xBF, i, b;
    for (i = 0; i < numbers.length; i++) {
      b = numbers[i];
      if (more > 0 && (b < least || b > most)) {
        units.push(REPLACEMENT);
        more = 0;
        least = 0x80;
        most = 0xBF;
      }
      if (more > 0) {
        c = c << 6 | b & 63;
        least = 0x80;
        most = 0xBF;
        if (--more > 0) continue;
        if (c < 0x10000) {
          units.push(c);
        } else {
          units.push(0xD800 + (c - 0x10000 >> 10), 0xDC00 + (c & 0x3FF));
        }
      } else if (b < 0x80) {
        units.push(b);
      } else if (b < 0xC2 || b > 0xF4) {
        units.push(REPLACEMENT);
      } else {
        more = b < 0xE0 ? 1 : b < 0xF0 ? 2 : 3;
        c = b & (b < 0xE0 ? 31 : b < 0xF0 ? 15 : 7);
        // No longer form than necessary, no surrogates, nothing above U+10FFFF.
        if (b === 0xE0) least = 0xA0;
        if (b === 0xED) most = 0x9F;
        if (b === 0xF0) least = 0x90;
        if (b === 0xF4) most = 0x8F;
      }
    }
    if (more > 0) units.push(REPLACEMENT);
    return textOf(units);
  }

  function failForCodePage(member, codePage) {
    fail(member, "the system has no code page " + codePage);
  }

  // By the classes. A zero character ends their texts, and is a zero byte in every code page.
  function codePageOf(text, codePage) {
    var lists = [], start = 0, hash, i;
    hash = new ActiveXObject("Vardeko.crypt.HashObject");
    hash.InitHash("MD5");
    hash.codePage = codePage;
    for (i = 0; i <= text.length; i++) {
      if (i < text.length && text.charCodeAt(i) !== 0) continue;
      if (i > start) {
        try {
          hash.Key = text.substring(start, i);
        } catch (e) {
          failForCodePage("FromText", codePage);
        }
        lists.push(numbersOf("FromText", hash.Key));
      }
      if (i < text.length) lists.push([0]);
      start = i + 1;
    }
    return joined(lists);
  }

  function textOfCodePage(numbers, codePage) {
    var number = new ActiveXObject("Vardeko.crypt.Number"), text = "", start = 0, i, run;
    for (i = 0; i <= numbers.length; i++) {
      if (i < numbers.length && numbers[i] !== 0) continue;
      if (i > start) {
        number.Binary = make(part(numbers, start, i));
        run = number.Text(codePage);
        if (run === "") failForCodePage("ToText", codePage);
        text += run;
      }
      if (i < numbers.length) text += "\u0000";
      start = i + 1;
    }
    return text;
  }

  // Hexadecimal and base64.

  function hexOf(numbers) {
    var parts = [], i;
    for (i = 0; i < numbers.length; i++) parts[i] = hexOfByte[numbers[i]];
    return parts.join("");
  }

  function numbersOfHex(text) {
    var numbers = [], high = -1, i, c, digit;
    for (i = 0; i < text.length; i++) {
      c = text.charAt(i);
      digit = HEX_DIGITS.indexOf(c.toLowerCase());
      if (digit < 0 && isSpace(c) && high < 0) continue;
      if (digit < 0 && !isSpace(c)) {
        fail("FromHex", shown(text, i) + " at character " + (i + 1) + " is no hexadecimal digit");
      }
      if (digit < 0) break;
      if (high < 0) {
        high = digit;
      } else {
        numbers.push(high << 4 | digit);
        high = -1;
      }
    }
    if (high >= 0) {
      fail("FromHex", "an odd number of hexadecimal digits: the one at character " + i + " is alone");
    }
    return numbers;
  }

  // RFC 4648, section 4.
  function base64Of(numbers) {
    var parts = [], i, three;
    for (i = 0; i < numbers.length; i += 3) {
      three = numbers[i] << 16 | (numbers[i + 1] || 0) << 8 | (numbers[i + 2] || 0);
      parts.push(BASE64_DIGITS.charAt(three >> 18) + BASE64_DIGITS.charAt(three >> 12 & 63) +
                 (i + 1 < numbers.length ? BASE64_DIGITS.charAt(three >> 6 & 63) : "=") +
                 (i + 2 < numbers.length ? BASE64_DIGITS.charAt(three & 63) : "="));
    }
    return parts.join("");
  }

  function numbersOfBase64(text) {
    var numbers = [], bits = 0, held = 0, digits = 0, pads = 0, i, c;
    for (i = 0; i < text.length; i++) {
      c = text.charAt(i);
      if (isSpace(c)) continue;
      if (c === "=") {
        if (digits % 4 < 2 || pads === 4 - digits % 4) {
          fail("FromBase64", "\"=\" at character " + (i + 1) + " is out of place");
        }
        pads++;
        continue;
      }
      if (!codeOfDigit.hasOwnProperty(c)) {
        fail("FromBase64", shown(text, i) + " at character " + (i + 1) + " is no base64 character");
      }
      if (pads > 0) fail("FromBase64", "character " + (i + 1) + " follows the padding");
      held = (held << 6 | codeOfDigit[c]) & 0xFFFF;
      digits++;
      bits += 6;
      if (bits >= 8) {
        bits -= 8;
        numbers.push(held >> bits & 255);
      }
    }
    if ((digits + pads) % 4 !== 0) {
      fail("FromBase64", "the text ends inside a group of four characters");
    }
    if ((held & (1 << bits) - 1) !== 0) {
      fail("FromBase64", "the last character before the padding has bits that belong to no byte");
    }
    return numbers;
  }

  // Arrays of numbers.

  function part(numbers, start, end) {
    var result = [], i;
    for (i = start; i < end; i++) result.push(numbers[i]);
    return result;
  }

  function joined(lists) {
    var result = [], i, j;
    for (i = 0; i < lists.length; i++) {
      for (j = 0; j < lists[i].length; j++) result.push(lists[i][j]);
    }
    return result;
  }

  return {
    FromText: function (text, codePage) {
      text = takeText("FromText", text);
      codePage = takeCodePage("FromText", codePage);
      if (natives !== null) {
        return natives.fromText(text, codePage) || failForCodePage("FromText", codePage);
      }
      return make(codePage < 0 ? utf16Of(text, codePage < -1)
                  : codePage === UTF8 ? utf8Of(text)
                  : codePageOf(text, codePage));
    },

    ToText: function (bytes, codePage) {
      var numbers = numbersOf("ToText", bytes), text;
      codePage = takeCodePage("ToText", codePage);
      if (natives !== null && codePage >= 0) {
        text = natives.toText(numbers, codePage);
        return text === undefined ? failForCodePage("ToText", codePage) : text;
      }
      return codePage < 0 ? textOfUtf16(numbers, codePage < -1)
        : codePage === UTF8 ? textOfUtf8(numbers)
        : textOfCodePage(numbers, codePage);
    },

    FromHex: function (text) {
      text = takeText("FromHex", text);
      return natives !== null && natives.fromHex(text) || make(numbersOfHex(text));
    },

    ToHex: function (bytes) {
      var numbers = numbersOf("ToHex", bytes);
      return natives !== null ? natives.toHex(numbers) : hexOf(numbers);
    },

    FromBase64: function (text) {
      text = takeText("FromBase64", text);
      return natives !== null && natives.fromBase64(text) || make(numbersOfBase64(text));
    },

    ToBase64: function (bytes) {
      var numbers = numbersOf("ToBase64", bytes);
      return natives !== null ? natives.toBase64(numbers) : base64Of(numbers);
    },

    FromArray: function (numbers) {
      var checked = [], i;
      if (typeName(numbers) !== "object" || typeName(numbers.length) !== "number") {
        fail("FromArray", "the argument is no array");
      }
      for (i = 0; i < numbers.length; i++) {
        if (!(numbers[i] >= 0 && numbers[i] <= 255 && numbers[i] === Math.floor(numbers[i]))) {
          fail("FromArray", "element " + i + " is no whole number from 0 to 255");
        }
        checked[i] = numbers[i];
      }
      return make(checked);
    },

    ToArray: function (bytes) {
      var numbers = numbersOf("ToArray", bytes);
      return part(numbers, 0, numbers.length);
    },

    Count: function (bytes) {
      return numbersOf("Count", bytes).length;
    },

    Slice: function (bytes, start, end) {
      var numbers = numbersOf("Slice", bytes), count = numbers.length;
      start = takePosition("Slice", start, count, 0);
      end = Math.max(start, takePosition("Slice", end, count, count));
      // The copy of a part.
      if (hasByteArrays) return new Uint8Array(numbers.subarray(start, end));
      return make(part(numbers, start, end));
    },

    Concat: function () {
      var lists = [], count = 0, i, result;
      for (i = 0; i < arguments.length; i++) {
        lists.push(numbersOf("Concat", arguments[i]));
        count += lists[i].length;
      }
      if (!hasByteArrays) return make(joined(lists));
      result = new Uint8Array(count);
      for (i = 0, count = 0; i < lists.length; count += lists[i++].length) result.set(lists[i], count);
      return result;
    },

    // Looks at all bytes wherever they differ; counts that differ are seen at once.
    Equal: function (a, b) {
      var left = numbersOf("Equal", a), right = numbersOf("Equal", b), difference = 0, i;
      if (left.length !== right.length) return false;
      if (natives !== null) return natives.equal(left, right);
      for (i = 0; i < left.length; i++) difference |= left[i] ^ right[i];
      return difference === 0;
    },

    Xor: function (a, b) {
      var left = numbersOf("Xor", a), right = numbersOf("Xor", b), result = [], i;
      if (left.length !== right.length) {
        fail("Xor", "the counts differ, " + left.length + " and " + right.length);
      }
      if (natives !== null) return natives.xor(left, right);
      for (i = 0; i < left.length; i++) result[i] = left[i] ^ right[i];
      return make(result);
    },

    // From the system's cryptographic source, which PexBigNumber uses too.
    Random: function (count) {
      var number;
      takeCount("Random", count, 0x1000000);
      if (natives !== null) return natives.random(count);
      if (count === 0) return make([]);
      // The two highest bits of the number are always set: a byte more, which is dropped.
      number = new ActiveXObject("Vardeko.crypt.Number");
      number.Random(count + 1, true);
      return this.Slice(number.Binary, 1);
    }
  };
})(typeof BytesNatives === "undefined" ? null : BytesNatives);
