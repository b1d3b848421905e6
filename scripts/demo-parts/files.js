// files.js PATH...: what Windows says about each file, as one line "folder|name|bytes|time in UTC|attributes". A path may
// begin with an environment variable, as in %TEMP%\a.txt. A file that is not there gives "folder|name|-|-|-".
var files = new ActiveXObject("Scripting.FileSystemObject");
var shell = new ActiveXObject("WScript.Shell");

function twoDigits(number) {
  return (number < 10 ? "0" : "") + number;
}

function timeText(time) {
  return time.getUTCFullYear() + "-" + twoDigits(time.getUTCMonth() + 1) + "-" + twoDigits(time.getUTCDate()) + " " +
    twoDigits(time.getUTCHours()) + ":" + twoDigits(time.getUTCMinutes()) + ":" + twoDigits(time.getUTCSeconds());
}

function attributesText(attributes) {
  var names = [];
  if (attributes & 1) names.push("read-only");
  if (attributes & 2) names.push("hidden");
  return names.length ? names.join(", ") : "normal";
}

for (var i = 0; i < WScript.Arguments.length; i++) {
  var path = shell.ExpandEnvironmentStrings(WScript.Arguments(i));
  var facts = "-|-|-";
  if (files.FileExists(path)) {
    var file = files.GetFile(path);
    facts = file.Size + "|" + timeText(new Date(file.DateLastModified)) + "|" + attributesText(file.Attributes);
  }
  WScript.Echo(files.GetParentFolderName(path) + "|" + files.GetFileName(path) + "|" + facts);
}
