var o = new ActiveXObject("Fake.Object");
function attempt(f) {
  try {
    f();
    WScript.Echo("no error");
  } catch (e) {
    WScript.Echo(e.number, "|", e.description, "|", e.message === e.description, "|", e.source, "|", e.name);
  }
}
attempt(function () { o.Fail(-2147211401, "Algorithm not found.", "A Class"); });
attempt(function () { o.Fail(-2147211401, "\u00e9\ud800", ""); });
attempt(function () { o.FailBare(-2147024809); });
attempt(function () { o.FailBare(-2147024882); });
attempt(function () { o.FailBare(-2147467259); });
attempt(function () { o.FailBare(-2147467263); });
attempt(function () { o.FailBare(-2147352571); });
attempt(function () { o.FailBare(-2147352566); });
attempt(function () { o.FailBare(-2147352558); });
attempt(function () { o.FailBare(-2147352567); });
attempt(function () { o.FailBare(-1610612735); });
attempt(function () { o.FailBare(10104); });
attempt(function () { o.FailCode(5); });
attempt(function () { o.Describe(); });
attempt(function () { o.NoSuch(); });
attempt(function () { o.NoSuch = 1; });
attempt(function () { o.ReadOnly = 1; });
attempt(function () { o.Held = 1; });
attempt(function () { o.Item(1, 2); });
attempt(function () { delete o.Value; });
attempt(function () { new o(); });
WScript.Echo("goes on", o.Count(1));
