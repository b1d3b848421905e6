// Runs cases.js on share/page/norvik.js in this script engine: node run.js [RESULTS.xml]. The results are written as the other
// test programs write theirs.
"use strict";

const fs = require("fs");
const path = require("path");
const vm = require("vm");

function read(...names) {
  return fs.readFileSync(path.join(__dirname, ...names), "utf8");
}

// What the script and its cases see is the language alone: nothing of the engine's own functions.
function runCases() {
  const lines = [];
  const script = read("..", "..", "share", "page", "norvik.js");
  const program = `function load(window, navigator, ActiveXObject) {${script}\nreturn Norvik;}\n${read("cases.js")}`;
  vm.runInNewContext(program, { say: (line) => lines.push(line) });
  return lines;
}

function escaped(text) {
  return text.replace(/[&<>"]/g, (character) => `&#${character.charCodeAt(0)};`);
}

function caseElement(line) {
  const [, verdict, name, why] = /^(passed|failed) (\w+)(?:: (.*))?$/s.exec(line);
  const failure = verdict === "passed" ? "" : `<failure message="${escaped(why)}"/>`;
  return `<testcase name="${name}" classname="PageScript" status="run" result="completed" time="0">${failure}</testcase>`;
}

const lines = runCases();
const failed = lines.filter((line) => !line.startsWith("passed "));
if (process.argv.length > 2) {
  const xml = `<testsuites tests="${lines.length}"><testsuite name="PageScript">${lines.map(caseElement).join("\n")}</testsuite></testsuites>`;
  fs.writeFileSync(process.argv[2], xml);
}
console.log(lines.join("\n"));
process.exitCode = failed.length === 0 && lines.length > 0 ? 0 : 1;
