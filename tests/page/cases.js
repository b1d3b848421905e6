// What share/page/norvik.js does on pages of every kind, in ES5: the same cases run in a browser's script engine of today and
// in the script host of Windows. Around them stand `load(window, navigator, ActiveXObject)`, which runs the script on such a
// page and gives its Norvik, and `say(line)`.

var windowsBrowser = "Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 Chrome/120.0 Safari/537.36";
var manifest = "https://apps.example.com/tool/setup.xml";

function times(text, count) {
  return new Array(count + 1).join(text);
}

// A page in a browser without controls, and all that happened on it, in one text.
function Page(userAgent) {
  var page = this;
  this.happened = "";
  this.window = { location: { href: "https://portal.example.com/" } };
  this.navigator = { userAgent: userAgent };
  this.ActiveXObject = undefined;
  this.calls = {
    done: function () { page.note("done", arguments); },
    failed: function () { page.note("failed", arguments); },
    handed: function () { page.note("handed", arguments); },
    unavailable: function () { page.note("unavailable", arguments); }
  };
}

Page.prototype.note = function (what, details) {
  var i;
  this.happened += what;
  for (i = 0; i < details.length; i += 1) {
    if (details[i] !== undefined) {
      this.happened += " " + details[i];
    }
  }
  this.happened += ";";
};

Page.prototype.start = function (url) {
  load(this.window, this.navigator, this.ActiveXObject).start(url, this.calls);
  return this.happened;
};

// The objects that a page's script can make: what they are asked for is noted, and fails with the number, if there is one.
function controlsOf(page, number) {
  return function (name) {
    page.note("made", [name]);
    this.Execute = executing(page, number);
  };
}

function executing(page, number) {
  return function (url) {
    var failure;
    page.note("executed", [url]);
    if (number) {
      failure = new Error("refused");
      failure.number = number;
      throw failure;
    }
  };
}

function noControls() {
  throw new Error("Automation server can't create object");
}

function equal(expected, actual) {
  if (expected !== actual) {
    throw new Error("expected '" + expected + "', got '" + actual + "'");
  }
}

function expectUnavailable(reason, url, userAgent) {
  var page = new Page(userAgent);
  equal("unavailable " + reason + ";", page.start(url));
  equal("https://portal.example.com/", page.window.location.href);
}

function expectHanded(url, userAgent) {
  var page = new Page(userAgent);
  equal("handed;", page.start(url));
  equal("norvik:" + url, page.window.location.href);
}

var cases = {
  AControlTellsThatItIsDone: function () {
    var page = new Page(windowsBrowser);
    page.ActiveXObject = controlsOf(page);
    equal("made Norvik.AXNorvik;executed " + manifest + ";done;", page.start(manifest));
    equal("https://portal.example.com/", page.window.location.href);
  },

  AControlTellsTheCodeOfAFailure: function () {
    var page = new Page(windowsBrowser);
    page.ActiveXObject = controlsOf(page, -2147024891);
    equal("made Norvik.AXNorvik;executed " + manifest + ";failed 0x80070005;", page.start(manifest));
    equal("https://portal.example.com/", page.window.location.href);
  },

  ACodeHasEightDigits: function () {
    var page = new Page(windowsBrowser);
    page.ActiveXObject = controlsOf(page, 26);
    equal("made Norvik.AXNorvik;executed m;failed 0x0000001a;", page.start("m"));
  },

  TheControlJudgesEveryURLItself: function () {
    var page = new Page("Mozilla/5.0 (iPhone)");
    page.ActiveXObject = controlsOf(page);
    equal("made Norvik.AXNorvik;executed C:\\tool\\setup.xml;done;", page.start("C:\\tool\\setup.xml"));
  },

  AnObjectOfThePageIsUsedFirst: function () {
    var page = new Page(windowsBrowser);
    page.ActiveXObject = controlsOf(page);
    page.calls.control = { object: { Execute: executing(page) } };
    equal("executed " + manifest + ";done;", page.start(manifest));
  },

  AnObjectWithoutAControlIsNone: function () {
    var page = new Page(windowsBrowser);
    page.calls.control = { object: null };
    equal("handed;", page.start(manifest));
    page = new Page(windowsBrowser);
    page.calls.control = {};
    page.ActiveXObject = controlsOf(page);
    equal("made Norvik.AXNorvik;executed " + manifest + ";done;", page.start(manifest));
  },

  WithoutAControlTheLinkIsHandedOver: function () {
    expectHanded(manifest, windowsBrowser);
    expectHanded("HTTPS://H/A", windowsBrowser);
    expectHanded("https://h/.../a..b/.c/%2e%2e%2e/..d?e=../f..", windowsBrowser);
    expectHanded("http://h/%20?a=b&c='#d(e)[f]$;!~*,@+:", windowsBrowser);
  },

  AControlThatMayNotBeMadeIsNone: function () {
    var page = new Page(windowsBrowser);
    page.ActiveXObject = noControls;
    equal("handed;", page.start(manifest));
    equal("norvik:" + manifest, page.window.location.href);
  },

  ALinkMayHaveTwoThousandCharacters: function () {
    expectHanded("https://h/" + times("a", 1990), windowsBrowser);
    expectUnavailable("url", "https://h/" + times("a", 1991), windowsBrowser);
  },

  ALinkCarriesPlainURLsOfTheWebOnly: function () {
    var urls = ["", "https://", "setup.xml", "/setup.xml", "//h/setup.xml", "C:\\setup.xml", "file:///C:/setup.xml",
      "\\\\server\\setup.xml", "ftp://h/a", "norvik:https://h/a", " https://h/a", "https://h/a b", "https://h/a\"b",
      "https://h/a\\b", "https://h/a\nb", "https://h/a\n", "https://h/\u00e4", "https://h/\u007f", "javascript:alert(1)//http://h/",
      "https://h/a/../b", "https://h/./b", "https://h/a/%2e%2E/b", "https://h/a/.%2e", "https://h/a?b/../c", "https://..", "https://h/.#a"];
    var i;
    for (i = 0; i < urls.length; i += 1) {
      expectUnavailable("url", urls[i], windowsBrowser);
    }
    expectUnavailable("url", undefined, windowsBrowser);
    expectUnavailable("url", null, windowsBrowser);
  },

  SystemsWithPrograms: function () {
    expectHanded(manifest, "Mozilla/5.0 (X11; Linux x86_64; rv:128.0) Gecko/20100101 Firefox/128.0");
    expectHanded(manifest, "Mozilla/5.0 (Windows NT 6.1; WOW64; Trident/7.0; rv:11.0) like Gecko");
  },

  SystemsWithoutPrograms: function () {
    expectUnavailable("system", manifest, "Mozilla/5.0 (X11; CrOS x86_64 14541.0.0) AppleWebKit/537.36 Chrome/120.0");
    expectUnavailable("system", manifest, "Mozilla/5.0 (Linux; Android 10; K) AppleWebKit/537.36 Chrome/120.0 Mobile");
    expectUnavailable("system", manifest, "Mozilla/5.0 (iPhone; CPU iPhone OS 17_0 like Mac OS X) AppleWebKit/605.1.15");
    expectUnavailable("system", manifest, "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15");
  },

  EveryCallMayBeLeftOut: function () {
    var page = new Page(windowsBrowser);
    page.calls = {};
    equal("", page.start(manifest));
    equal("norvik:" + manifest, page.window.location.href);
    page.calls = undefined;
    page.start("setup.xml");
    page.ActiveXObject = controlsOf(page);
    page.start(manifest);
    page.ActiveXObject = controlsOf(page, 1);
    page.start(manifest);
    equal("made Norvik.AXNorvik;executed " + manifest + ";made Norvik.AXNorvik;executed " + manifest + ";", page.happened);
  },

  WhatAListenerThrowsIsNoFailureOfTheControl: function () {
    var page = new Page(windowsBrowser);
    var thrown = "";
    page.ActiveXObject = controlsOf(page);
    page.calls.done = function () { throw new Error("the page's own"); };
    try {
      page.start(manifest);
    } catch (error) {
      thrown = error.message;
    }
    equal("the page's own", thrown);
    equal("made Norvik.AXNorvik;executed " + manifest + ";", page.happened);
  },

  AURLMayBeAnObjectThatReadsAsOne: function () {
    expectHanded({ toString: function () { return manifest; } }, windowsBrowser);
  }
};

(function () {
  var name;
  for (name in cases) {
    if (cases.hasOwnProperty(name)) {
      try {
        cases[name]();
        say("passed " + name);
      } catch (error) {
        say("failed " + name + ": " + error.message);
      }
    }
  }
}());
