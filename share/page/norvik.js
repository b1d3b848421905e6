// Starts a manifest from a page: one file without dependencies, for Internet Explorer 11 and every browser since.
//
//   Norvik.start("https://apps.example.com/tool/setup.xml", {
//     done: function () {},              // the control ran the manifest to its end
//     failed: function (code) {},        // the control ran it and failed: a result code, "0x80070005"
//     handed: function () {},            // a link was handed to the browser
//     unavailable: function (reason) {}, // there is neither: "url" or "system"
//     control: element                   // an <object> of the page; without it the script makes a control of its own
//   });
//
// Each of them may be left out. One of the functions is called, once, before start returns.
//
// What a page can know: the control gives a result, but commands of the manifest that failed are in the log alone. A link
// tells nothing. The browser may ask, the user may say no, links may be switched off on the machine, and the run may fail: all
// of this is "handed". Unavailable is what is known for sure. A link carries only a web URL of printable ASCII characters
// without a quote or a backslash, 2,000 at most, and without "." or ".." in the place of a folder ("url"); and programs for
// Windows run on Windows and under Linux only ("system").
//
// Call it when the user clicks, once for each click: browsers drop a link that nobody asked for, and the second of two. A
// manifest that opens a file in the browser needs the <object>, by which the control knows the window.
var Norvik = (function () {
  "use strict";

  var programName = "Norvik.AXNorvik";
  var scheme = "norvik:";
  var linkedURL = /^https?:\/\/[!#-\[\]-~]+$/i;
  var dotFolder = /[\/?#](?:\.|%2e){1,2}(?:[\/?#]|$)/i;
  var longestURL = 2000;

  function controlOf(element) {
    try {
      return element ? element.object || null : new ActiveXObject(programName);
    } catch (error) {
      return null; // no such object in this browser, not registered, or not allowed on this page
    }
  }

  function codeOf(error) {
    return "0x" + ("0000000" + (error.number >>> 0).toString(16)).slice(-8);
  }

  function canBeLinked(url) {
    return url.length <= longestURL && linkedURL.test(url) && !dotFolder.test(url);
  }

  function hasPrograms(userAgent) {
    return /Windows NT|X11/.test(userAgent) && !/CrOS/.test(userAgent);
  }

  function tell(listener, detail) {
    if (listener) {
      listener(detail);
    }
  }

  function run(control, url, calls) {
    try {
      control.Execute(url);
    } catch (error) {
      tell(calls.failed, codeOf(error));
      return;
    }
    tell(calls.done);
  }

  function follow(url, calls) {
    if (!canBeLinked(url)) {
      tell(calls.unavailable, "url");
    } else if (!hasPrograms(navigator.userAgent)) {
      tell(calls.unavailable, "system");
    } else {
      window.location.href = scheme + url;
      tell(calls.handed);
    }
  }

  function start(url, calls) {
    var listeners = calls || {};
    var control = controlOf(listeners.control) || controlOf(null);
    if (control) {
      run(control, String(url), listeners);
    } else {
      follow(String(url), listeners);
    }
  }

  return { start: start };
}());
