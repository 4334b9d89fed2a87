// status: 255
WScript.Quit(-1);
