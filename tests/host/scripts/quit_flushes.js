// errors: errors
WScript.StdOut.Write("no line end");
WScript.StdErr.WriteLine("errors");
WScript.Quit();
WScript.Echo("after");
