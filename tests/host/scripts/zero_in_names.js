// A zero character does not cut a name short.
WScript.Echo(WScript.EnvironmentVariable("LC_ALL") !== undefined, WScript.EnvironmentVariable("LC_ALL\u0000x"));
WScript.Echo(WScript.IsSameFile("/", "/"), WScript.IsSameFile("/\u0000x", "/"), WScript.IsSameFile("/", "/\u0000x"));
