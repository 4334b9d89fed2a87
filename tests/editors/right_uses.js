// What the declarations must accept.
var hash = new ActiveXObject("Vardeko.crypt.HashObject");
hash.InitHash("SHA256");
hash.Key = "key";
hash.Key = Bytes.FromHex("00");
hash.codePage = 65001;
hash.HashData("abc");
hash.HashData("abc", 1252);
hash.HashData(hash.BinaryValue);
hash.HashData(new Date());
hash.HashData(null);
hash.HashUpdate(12);
WScript.Echo(hash.Value.toLowerCase(), hash.HashSize + 1, Bytes.ToHex(hash.BinaryValue));

// ProgIDs in other letter cases, with a version, of the free-threaded registration, of other programs.
new ActiveXObject("vardeko.CRYPT.hashobject").InitHash("MD5");
new ActiveXObject("Vardeko.crypt.HashObject.1").InitHash("MD5");
new ActiveXObject("Vardeko.crypt.HashObject.free").InitHash("MD5");
new ActiveXObject("Some.Other.Class").Anything(1, 2).Something = 3;
new ActiveXObject(WScript.Arguments(0)).Anything();
WScript.CreateObject("Vardeko.crypt.RSA").CreateRandKeys(64, true);
GetObject("", "Vardeko.crypt.Symmetric").Init("AES");
WScript.GetObject("", "Vardeko.crypt.Symmetric").Init("AES");

var number = new ActiveXObject("Vardeko.crypt.Number");
number.Value = 12;
number.Value = "12";
number.Value = hash.BinaryValue;
number.Text = "text";
WScript.Echo(number.Text.length, number.Text(65001).length, number.Mul(number).Add(1).ModExp("3", 7).Value);
number.Inc();
number.Inc(2);
number.Random(16, true, false);

var filter = new ActiveXObject("Vardeko.crypt.ToviStreamDigest");
filter.Stream = new ActiveXObject("ADODB.Stream");
filter.Stream = WScript.MemoryStream();
filter.Stream = new ActiveXObject("Vardeko.crypt.ToviStreamCrypt");
filter.Stream = null;
WScript.StreamOf(filter).Write(Bytes.FromText("text"));
filter.SeekingForbidden = !filter.SeekingForbidden;

// The host's own classes.
var files = new ActiveXObject("Scripting.FileSystemObject");
var text = files.OpenTextFile("name", 1);
while (!text.AtEndOfStream) WScript.StdOut.WriteLine(text.ReadLine(), 1);
var each = new Enumerator(files.GetFolder(".").SubFolders);
for (; !each.atEnd(); each.moveNext()) {
  WScript.Echo(each.item().Files.Count, each.item().Files.Item("name").Size);
  WScript.Echo(new Date(each.item().DateCreated).getTime());
}
var items = new ActiveXObject("Scripting.Dictionary");
items.Add("key", [1, 2]);
WScript.Echo(items("key")[0], items.Item("key"), new VBArray(items.Keys()).toArray().length);
var shell = new ActiveXObject("WScript.Shell");
WScript.Echo(shell.SpecialFolders("Desktop"), shell.SpecialFolders.length);
shell.Environment("PROCESS").Remove("NAME");
WScript.Echo(shell.Environment("PROCESS")("NAME").length);
WScript.Echo(WScript.Arguments.Named("option"), WScript.Arguments.Unnamed(0), WScript.Arguments.Count());
WScript.Timeout = 10;
try {
  throw new Error(5, "text");
} catch (e) {
  WScript.Echo(e.number, e.description);
}
WScript.Echo(new VBArray(hash.BinaryValue).getItem(0).toFixed(), new Date().getVarDate() !== null);
/** @type {MIROLTALib.HashObject} */
var named = hash;
/** @type {Scripting.File} */
var file = files.GetFile("name");
named.HashData(file.Path);
if (typeof WScript.OpenFile !== "undefined") named.HashData(WScript.OpenFile("name", "r").Read(10));
