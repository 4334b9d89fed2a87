// status: 3
new ActiveXObject("Fake.Object").CallBack(function () { WScript.Echo("in"); WScript.Quit(3); });
WScript.Echo("after");
