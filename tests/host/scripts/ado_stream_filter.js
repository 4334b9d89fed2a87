// Stream filters over an ADODB.Stream, which is a byte stream for automation.
function hex(bytes) {
  for (var text = "", i = 0; i < bytes.length; i++) text += (256 + bytes[i]).toString(16).substr(1);
  return text;
}
function bytesOf(text) {
  for (var bytes = new Uint8Array(text.length), i = 0; i < text.length; i++) bytes[i] = text.charCodeAt(i);
  return bytes;
}
function errorOf(f) {
  try {
    f();
  } catch (e) {
    return "0x" + (e.number >>> 0).toString(16);
  }
  return "no error";
}
var stream = new ActiveXObject("ADODB.Stream");
stream.Type = 1;
stream.Open();

// The digest of "abc" in FIPS 180-2, appendix B.1.
var digest = new ActiveXObject("Vardeko.crypt.ToviStreamDigest"), through = WScript.StreamOf(digest);
digest.WriteAlgorithm = "SHA256";
digest.Stream = stream;
through.Write(bytesOf("ab"));
through.Write(bytesOf("c"));
WScript.Echo("written: " + stream.Size + " " + stream.Position);
WScript.Echo("digest: " + digest.WriteValue.toLowerCase());
stream.Position = 0;
WScript.Echo("bytes: " + hex(stream.Read()));
stream.Position = 0;
digest.ReadAlgorithm = "SHA256";
WScript.Echo("read: " + through.Read(10).length + " " + (digest.ReadValue === digest.WriteValue));

// The position is one.
var own = WScript.StreamOf(stream);
own.Position = 1;
WScript.Echo("position: " + stream.Position + " " + hex(stream.Read(1)) + " " + own.Position);
own.Size = 2;
WScript.Echo("size: " + stream.Size);

// Encrypted into one stream, decrypted from it.
stream.Position = 0;
stream.SetEOS();
var crypt = new ActiveXObject("Vardeko.crypt.ToviStreamCrypt");
through = WScript.StreamOf(crypt);
crypt.Stream = stream;
crypt.WriteAlgorithm = crypt.ReadAlgorithm = "AES";
crypt.WriteKey = crypt.ReadKey = "0123456789abcdef";
through.Write(bytesOf("sixteen bytes ok"));
WScript.Echo("encrypted: " + stream.Size);
stream.Position = 0;
WScript.Echo("decrypted: " + String.fromCharCode.apply(null, through.Read(16)));

stream.Close();
WScript.Echo("closed: " + errorOf(function () { through.Write(bytesOf("sixteen bytes ok")); }) + " " +
  errorOf(function () { own.Read(1); }));
stream.Open("", 1);
WScript.Echo("only reading: " + errorOf(function () { own.Write(bytesOf("a")); }));
