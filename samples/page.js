// What a page's script does, for the script host: cscript //nologo page.js MANIFEST-URL [debug]
//
// A script learns of a failure by an exception whose number is the result code. It cannot tell a run in which every
// command succeeded (S_OK) from one in which some failed (S_FALSE): both return normally, and the log has the difference.
function run(manifestURL, debug) {
  try {
    var control = new ActiveXObject("Norvik.AXNorvik");
    control.LogDebug = debug;
    control.Execute(manifestURL);
    return 0;
  } catch (failure) {
    return failure.number;
  }
}

function hexadecimal(code) {
  return "0x" + ("0000000" + (code >>> 0).toString(16)).slice(-8);
}

var words = WScript.Arguments;
WScript.Echo(hexadecimal(run(words(0), words.length > 1 && words(1) == "debug")));
