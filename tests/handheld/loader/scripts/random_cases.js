// Random calls of all classes, the same for the same seed: what two builds of the module print can be
// compared. No call's result is random itself.
//
//   random_cases.js SEED COUNT

var state = Number(WScript.Arguments(0));
var count = Number(WScript.Arguments(1));

// The numbers 0 to 2^32 - 1 (xorshift, Marsaglia 2003).
function next() {
  state ^= state << 13;
  state ^= state >>> 17;
  state ^= state << 5;
  return state >>> 0;
}
function below(limit) { return next() % limit; }
function pick(list) { return list[below(list.length)]; }
function chance(percent) { return below(100) < percent; }
function bytes(length) {
  var made = new Uint8Array(length);
  for (var i = 0; i < length; i++) made[i] = next() >>> 24;
  return made;
}
function text(length) {
  var made = "";
  for (var i = 0; i < length; i++) {
    made += String.fromCharCode(chance(80) ? 32 + below(95) : chance(70) ? 160 + below(0x500) : 0x4E00 + below(5000));
  }
  return made;
}
function size() { return chance(60) ? below(40) : chance(80) ? below(300) : below(5000); }
function data() {
  switch (below(8)) {
    case 0: return text(size());
    case 1: return next() | 0;
    case 2: return next() / 7;
    case 3: return chance(50) ? null : true;
    default: return bytes(size());
  }
}
function show(value) {
  if (value === null || value === undefined) return String(value);
  if (typeof value === "object" && value.length !== undefined) {
    var hex = "";
    for (var i = 0; i < value.length; i++) hex += (value[i] + 256).toString(16).substr(1);
    return "[" + hex + "]";
  }
  return typeof value + " " + value;
}
// One call: its name and what it gives, an error with all that it says.
function call(name, f) {
  var said;
  try {
    said = show(f());
  } catch (e) {
    said = "error " + e.number + " [" + e.source + "] " + e.description;
  }
  WScript.Echo(name + ": " + said);
}

var codePages = [-1, -2, 0, 65001, 20127, 1252, 65000, 932, 12345];

function hashCases(hash) {
  call("InitHash", function () { return hash.InitHash(pick(["MD5", "SHA1", "SHA256", "SHA256", "sha1"])); });
  if (chance(40)) call("Key", function () { hash.Key = chance(70) ? bytes(size()) : text(below(90)); return hash.Key; });
  if (chance(30)) call("codePage", function () { hash.codePage = pick(codePages); return hash.codePage; });
  for (var i = below(4); i > 0; i--) {
    call("HashUpdate", function () { return chance(60) ? hash.HashUpdate(data()) : hash.HashUpdate(data(), pick(codePages)); });
  }
  if (chance(30)) call("HashFinalize", function () { return hash.HashFinalize(); });
  call("Value", function () { return hash.Value; });
  call("BinaryValue", function () { return hash.BinaryValue; });
  call("sizes", function () { return hash.HashSize + " " + hash.BlockSize; });
  if (chance(40)) call("HashData", function () { hash.HashData(data()); return hash.Value; });
  if (chance(30)) call("Reset", function () { return hash.Reset(); });
  if (chance(20)) call("ResetKey", function () { hash.ResetKey(); return hash.Key; });
}

function cipherCases(cipher) {
  call("Init", function () { return cipher.Init(pick(["AES", "AES", "DES", "des"])); });
  call("Key", function () { cipher.Key = bytes(pick([8, 16, 16, 24, 32, 5])); return cipher.Key; });
  call("PadType", function () { cipher.PadType = below(256); return cipher.PadType; });
  if (chance(20)) call("codePage", function () { cipher.codePage = pick(codePages); return cipher.codePage; });
  for (var i = 1 + below(4); i > 0; i--) {
    var piece = data();
    var last = chance(60);
    call("Encrypt", function () { return cipher.Encrypt(piece, last); });
    call("Decrypt", function () { return cipher.Decrypt(piece, last); });
  }
  call("there and back", function () { return cipher.Decrypt(cipher.Encrypt(bytes(size()))); });
  if (chance(30)) call("Reset", function () { return cipher.Reset(below(3)); });
  if (chance(20)) call("ResetKey", function () { cipher.ResetKey(); return cipher.Key; });
}

function digits(length) {
  var made = chance(30) ? "-" : "";
  for (var i = 0; i < length; i++) made += below(10);
  return made;
}
function operand() {
  switch (below(6)) {
    case 0: return next() | 0;
    case 1: return digits(1 + below(60));
    case 2: return bytes(1 + below(20));
    case 3: return digits(1 + below(8));
    case 4: return number.NewNumber(bytes(1 + below(90)));
    default: return bytes(1 + below(150));
  }
}
var number = new ActiveXObject("Vardeko.crypt.Number");
function numberCases(n) {
  call("Value", function () { n.Value = operand(); return n.Value; });
  call("Hex", function () { return n.Hex; });
  call("Binary", function () { return n.Binary; });
  ["Add", "Sub", "Mul", "Div", "Mod", "GCD"].forEach(function (name) {
    var other = operand();
    call(name, function () { return n[name](other).Hex; });
  });
  call("Cmp", function () { return n.Cmp(operand()); });
  if (chance(50)) call("Inc", function () { n.Inc(operand()); return n.Value; });
  if (chance(50)) call("Dec", function () { n.Dec(); return n.Value; });
  var modulus = number.NewNumber(bytes(1 + below(48)));
  call("ModExp", function () { return n.ModExp(bytes(1 + below(24)), modulus).Hex; });
  var prime = number.NewNumber("2305843009213693951");
  call("ModInv", function () { return n.ModInv(prime).Hex; });
  if (chance(50)) call("Text", function () { n.Text(pick([65001, -1, -2, 0])) = text(1 + below(20)); return n.Hex; });
  if (chance(50)) call("Text back", function () { return escape(n.Text(pick([65001, -1, -2, 1252]))); });
  if (chance(30)) call("Hex", function () { n.Hex = text(below(30)); return n.Hex; });
}

function rsaCases(rsa) {
  call("CreateKeys", function () {
    rsa.CreateKeys(bytes(4 + below(20)), bytes(4 + below(20)));
    return show(rsa.Modulus) + show(rsa.PublicExp) + show(rsa.SecretExp) + show(rsa.P) + show(rsa.Q);
  });
  call("BlockSize", function () { return rsa.BlockSize; });
  var message = bytes(1 + below(12));
  call("Encrypt", function () { return rsa.Encrypt(message); });
  call("Decrypt", function () { return rsa.Decrypt(rsa.Encrypt(message)); });
  call("DecryptPQ", function () { return rsa.DecryptPQ(rsa.Encrypt(message)); });
  call("any data", function () { return rsa.Encrypt(data()); });
  if (chance(30)) call("P", function () { rsa.P = operand(); return rsa.P; });
  if (chance(30)) call("Reset", function () { rsa.Reset(); return rsa.Modulus; });
}

function streamCases(filter, setUp) {
  var stream = WScript.StreamOf(filter);
  var memory = WScript.MemoryStream(bytes(size()));
  call("Stream", function () { filter.Stream = memory; });
  setUp(filter, "Read");
  setUp(filter, "Write");
  if (chance(50)) call("SeekingForbidden", function () { filter.SeekingForbidden = chance(50); return filter.SeekingForbidden; });
  for (var i = 1 + below(6); i > 0; i--) {
    switch (below(5)) {
      case 0: call("Write", function () { return stream.Write(bytes(size())); }); break;
      case 1: call("Position", function () { stream.Position = below(400); return stream.Position; }); break;
      case 2: call("CopyTo", function () { var copy = WScript.MemoryStream(); stream.CopyTo(copy, below(900)); return copy.Size; }); break;
      default: call("Read", function () { return stream.Read(size()); });
    }
  }
  call("WriteFinalize", function () { return filter.WriteFinalize(); });
  call("ReadFinalize", function () { return filter.ReadFinalize(); });
  call("rest", function () { return stream.Read(5000); });
  call("behind", function () { memory.Position = 0; return memory.Read(); });
}
function digestSetUp(filter, way) {
  call(way + "Algorithm", function () { filter[way + "Algorithm"] = pick(["MD5", "SHA1", "SHA256", "SHA-1"]); return filter[way + "Algorithm"]; });
  if (chance(50)) call(way + "Key", function () { filter[way + "Key"] = bytes(size()); return filter[way + "Key"]; });
}
function cryptSetUp(filter, way) {
  call(way + "Algorithm", function () { filter[way + "Algorithm"] = pick(["AES", "DES"]); return filter[way + "Algorithm"]; });
  call(way + "Key", function () { filter[way + "Key"] = bytes(pick([8, 16, 24, 32, 7])); return filter[way + "Key"]; });
  call(way + "Decrypt", function () { filter[way + "Decrypt"] = chance(50); return filter[way + "Decrypt"]; });
  call(way + "PadType", function () { filter[way + "PadType"] = below(256); return filter[way + "PadType"]; });
}

var kinds = [
  ["HashObject", hashCases],
  ["Symmetric", cipherCases],
  ["Number", numberCases],
  ["RSA", rsaCases],
  ["ToviStreamDigest", function (f) {
    streamCases(f, digestSetUp);
    call("ReadValue", function () { return f.ReadValue; });
    call("WriteValue", function () { return f.WriteValue; });
    call("ReadBinaryValue", function () { return f.ReadBinaryValue; });
  }],
  ["ToviStreamCrypt", function (f) { streamCases(f, cryptSetUp); }]
];
for (var i = 0; i < count; i++) {
  var kind = kinds[i % kinds.length];
  var name = "Vardeko.crypt." + kind[0] + pick(["", ".free"]);
  WScript.Echo(i + " " + name);
  kind[1](new ActiveXObject(name));
}
