// What the TypeScript compiler must find by the declarations: each line has the number of its error.
var hash = new ActiveXObject("Vardeko.crypt.HashObject");
hash.initHash("MD5");                                    // 2339 the letter case
hash.Digest("abc");                                      // 2339 no such member
hash.InitHash();                                         // 2554 an argument missing
hash.InitHash("MD5", 1);                                 // 2554 an argument too many
hash.InitHash(5);                                        // 2345 its type
hash.HashData({text: "abc"});                            // 2345 an object of the script
hash.HashData([1, 2, 3]);                                // 2345 an array of the script
hash.HashData(function () {});                           // 2345
hash.HashData("abc", "65001");                           // 2345
hash.codePage = "65001";                                 // 2322
hash.HashSize = 20;                                      // 2540 read-only
hash.BinaryValue[0];                                     // 7053 an array of automation
hash.Value.toUpper();                                    // 2339 of a text
new ActiveXObject("vardeko.crypt.NUMBER").Plus(1);       // 2339
new ActiveXObject("Vardeko.crypt.Number").Add(1).Plus(); // 2339 of a result
WScript.CreateObject("Vardeko.crypt.RSA").CreateKey();   // 2339
GetObject("", "Vardeko.crypt.RSA").Modulo();             // 2339
WScript.GetObject("", "Vardeko.crypt.RSA").Modulo();     // 2339
new ActiveXObject("Vardeko.crypt.ToviStreamDigest").Stream = "name";   // 2322
new ActiveXObject(12);                                   // 2769
new ActiveXObject();                                     // 2554
WScript.echo("text");                                    // 2339
WScript.OpenFile("name", "read");                        // 2345
WScript.Arguments("first");                              // 2345
WScript.StdOut.Print("text");                            // 2339
Bytes.FromHex(12);                                       // 2345
Bytes.ToHex("00");                                       // 2345
new ActiveXObject("Scripting.FileSystemObject").GetFile("name").Length;   // 2339
new Enumerator(new ActiveXObject("Scripting.FileSystemObject").GetFolder(".").Files).item().Lines;   // 2339
new VBArray([1, 2]);                                     // 2769
