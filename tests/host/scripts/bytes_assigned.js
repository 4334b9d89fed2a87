// A script that has a variable of this name never sees the library.
Bytes = [1, 2];
WScript.Echo(Bytes.length, this.Bytes === Bytes);
