// Files and folders. Wine's errors have no texts, so only numbers are printed.
function attempt(name, f) {
  var said;
  try { said = f(); } catch (e) { said = "error " + (e.number >>> 0).toString(16); }
  WScript.Echo(name + ": " + said);
}
var fso = new ActiveXObject("Scripting.FileSystemObject");
function write(name, text) {
  var f = fso.CreateTextFile(name);
  f.Write(text);
  f.Close();
}
function all(names) {
  var out = [], i;
  for (i = 0; i < names.length; i++) {
    if (fso.FileExists(names[i])) out.push(names[i]);
    if (fso.FolderExists(names[i])) out.push(names[i] + "/");
  }
  return out.join(" ");
}
var paths = ["c:\\a\\b.txt", "c:\\a\\b\\", "c:\\", "a", "a.b.c", ".hidden", "a.", "", "a/b/c.d", "a\\\\b", "a\\b/",
             "..\\x.y"], i;
for (i = 0; i < paths.length; i++) {
  WScript.Echo([paths[i], fso.GetFileName(paths[i]), fso.GetBaseName(paths[i]), fso.GetExtensionName(paths[i]),
                fso.GetParentFolderName(paths[i]), fso.GetDriveName(paths[i])].join(" | "));
}
WScript.Echo(fso.BuildPath("c:\\a", "b"), fso.BuildPath("c:\\a\\", "b"), fso.BuildPath("c:\\", "b"),
             fso.BuildPath("c:\\a\\", "\\b"));
WScript.Echo(/^rad[0-9A-F]{5}\.tmp$/.test(fso.GetTempName()), fso.GetAbsolutePathName("a") !== "a");

attempt("CreateFolder", function () { return fso.CreateFolder("d").Name; });
attempt("CreateFolder again", function () { fso.CreateFolder("d"); });
// wine leaves out: it has the number of the system there
attempt("CreateFolder in none", function () { fso.CreateFolder("x/y"); });
// wine continues
write("d/a.txt", "a");
write("d\\b.txt", "bb");
write("d/c.dat", "ccc");
attempt("there", function () { return all(["d", "d/", "d/a.txt", "d\\b.txt", "d/none", "none", ""]); });
attempt("GetFile", function () { return fso.GetFile("d/b.txt").Size; });
attempt("GetFile of none", function () { fso.GetFile("none"); });
attempt("GetFile in none", function () { fso.GetFile("none/none"); });
attempt("GetFolder of none", function () { fso.GetFolder("none"); });
attempt("GetFolder of a file", function () { fso.GetFolder("d/a.txt"); });
attempt("Files", function () { return fso.GetFolder("d").Files.Count; });
attempt("default member", function () { return fso.GetFolder("d") == fso.GetAbsolutePathName("d"); });
// wine leaves out: it has none of these
attempt("File", function () {
  var f = fso.GetFile("d/a.txt");
  return [f.Name, f.Size, f.ParentFolder.Name, typeof f.Drive.Path, typeof f.DateCreated, typeof f.DateLastModified,
          typeof f.DateLastAccessed, f.ShortName.length].join();
});
attempt("File.OpenAsTextStream", function () { return fso.GetFile("d/a.txt").OpenAsTextStream().ReadAll(); });
attempt("Folder", function () {
  var f = fso.GetFolder("d");
  return [f.Name, f.Size, f.Attributes & 16, f.IsRootFolder, f.SubFolders.Count, f.Files.Item("a.txt").Name].join();
});
attempt("Files.Item of none", function () { fso.GetFolder("d").Files.Item("none"); });
attempt("SubFolders.Item of none", function () { fso.GetFolder("d").SubFolders.Item("none"); });
attempt("SubFolders.Add", function () { return fso.GetFolder("d").SubFolders.Add("sub").Name; });
attempt("Folder.CreateTextFile", function () {
  fso.GetFolder("d/sub").CreateTextFile("f").Close();
  return all(["d/sub/f"]);
});
attempt("File.Copy and Move", function () {
  var f = fso.GetFile("d/a.txt");
  f.Copy("f.txt");
  f = fso.GetFile("f.txt");
  f.Move("g.txt");
  f.Name = "h.txt";
  return all(["f.txt", "g.txt", "h.txt"]) + " " + f.Name;
});
attempt("File.Name of another", function () { fso.GetFile("h.txt").Name = "d"; });
attempt("File.Delete", function () { var f = fso.GetFile("h.txt"); f.Delete(); return all(["h.txt"]) + "gone"; });
attempt("Folder.Copy, Move and Delete", function () {
  fso.GetFolder("d").Copy("e");
  var f = fso.GetFolder("e"), seen;
  f.Move("e2");
  seen = all(["e", "e2", "e2/a.txt", "e2/sub", "e2/sub/f"]);
  f.Delete();
  return seen + " " + all(["e2"]) + "gone";
});
fso.DeleteFolder("d/sub");
// wine continues

attempt("CopyFile", function () { fso.CopyFile("d/a.txt", "copy.txt"); return all(["d/a.txt", "copy.txt"]); });
attempt("CopyFile, overwriting", function () { fso.CopyFile("d/b.txt", "copy.txt", true); return all(["copy.txt"]); });
attempt("CopyFile, not overwriting", function () { fso.CopyFile("d/a.txt", "copy.txt", false); });
attempt("CopyFile of none", function () { fso.CopyFile("d/none", "copy.txt"); });
attempt("CopyFile of no match", function () { fso.CopyFile("d/*.none", "d"); });
attempt("CopyFile of a folder", function () { fso.CopyFile("d", "other"); });
attempt("CopyFile into a folder", function () { fso.CopyFile("copy.txt", "d/"); return all(["d/copy.txt"]); });
attempt("CopyFile by pattern", function () {
  fso.CreateFolder("to");
  fso.CopyFile("d/*.txt", "to");
  return all(["to/a.txt", "to/b.txt", "to/copy.txt", "to/c.dat"]);
});
// wine leaves out: it copies into the folder, onto itself, and reports the number of the system
attempt("CopyFile to a folder's name", function () { fso.CopyFile("copy.txt", "d"); });
attempt("CopyFile into none", function () { fso.CopyFile("copy.txt", "none/"); });
attempt("CopyFile onto itself", function () { fso.CopyFile("copy.txt", "copy.txt"); });
// wine continues
attempt("CopyFolder", function () { fso.CopyFolder("d", "d2"); return all(["d2", "d2/a.txt", "d2/c.dat"]); });
attempt("CopyFolder, not overwriting", function () { fso.CopyFolder("d", "d2", false); });
attempt("CopyFolder of none", function () { fso.CopyFolder("none", "d3"); });
attempt("CopyFolder by pattern", function () {
  fso.CopyFolder("d*", "to");
  return all(["to/d", "to/d2", "to/d/a.txt"]);
});
attempt("MoveFile", function () { fso.MoveFile("copy.txt", "moved.txt"); return all(["copy.txt", "moved.txt"]); });
attempt("MoveFile onto another", function () { fso.MoveFile("moved.txt", "d/a.txt"); });
attempt("MoveFile of none", function () { fso.MoveFile("none.txt", "d/x.txt"); });
// wine leaves out: it moves into no folder, and no folders
attempt("MoveFile into a folder", function () { fso.MoveFile("moved.txt", "d/"); return all(["moved.txt", "d/moved.txt"]); });
attempt("MoveFile by pattern", function () { fso.MoveFile("d/mov??.*", "to"); return all(["d/moved.txt", "to/moved.txt"]); });
attempt("MoveFolder", function () { fso.MoveFolder("d2", "d3"); return all(["d2", "d3", "d3/a.txt"]); });
attempt("MoveFolder onto another", function () { fso.MoveFolder("d3", "d"); });
attempt("MoveFolder of none", function () { fso.MoveFolder("none", "x"); });
// wine continues
attempt("DeleteFile", function () { fso.DeleteFile("d/a.txt"); return all(["d/a.txt", "d/b.txt"]); });
attempt("DeleteFile of none", function () { fso.DeleteFile("d/a.txt"); });
attempt("DeleteFile by pattern", function () { fso.DeleteFile("to\\*.txt"); return all(["to/a.txt", "to/b.txt", "to/d"]); });
attempt("DeleteFile of no match", function () { fso.DeleteFile("d/*.none"); });
// wine leaves out: it deletes nothing and says nothing
attempt("DeleteFile of a folder", function () { fso.DeleteFile("d"); });
// wine continues
write("locked.txt", "x");
attempt("read-only", function () { var f = fso.GetFile("locked.txt"); f.Attributes = 1; return f.Attributes & 1; });
attempt("DeleteFile of a read-only file", function () { fso.DeleteFile("locked.txt"); });
// wine leaves out: it writes read-only files
attempt("writing a read-only file", function () { fso.CreateTextFile("locked.txt"); });
attempt("appending to a read-only file", function () { fso.OpenTextFile("locked.txt", 8); });
// wine continues
attempt("DeleteFile with force", function () { fso.DeleteFile("locked.txt", true); return all(["locked.txt"]) + "gone"; });
// wine leaves out: it has the number of files
attempt("DeleteFolder of none", function () { fso.DeleteFolder("none"); });
// wine continues
attempt("DeleteFolder", function () { fso.DeleteFolder("d"); return all(["d"]) + "gone"; });
attempt("DeleteFolder by pattern", function () { fso.DeleteFolder("t?"); return all(["to"]) + "gone"; });
attempt("GetSpecialFolder", function () { return fso.FolderExists(fso.GetSpecialFolder(2).Path); });
attempt("GetDrive of none", function () { fso.GetDrive("q:"); });
attempt("DriveExists of none", function () { return fso.DriveExists("q:"); });
