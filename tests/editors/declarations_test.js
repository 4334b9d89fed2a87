// Tests of mirolta.d.ts by the TypeScript compiler and its language service, which is what editors ask:
//
//   declarations_test.js TYPESCRIPT DECLARATIONS PROJECT HOST HOST-CLASS-LISTING
"use strict";

const assert = require("assert");
const childProcess = require("child_process");
const fs = require("fs");
const path = require("path");

const [typeScript, declarations, project, host, listing] = process.argv.slice(2);
const ts = require(typeScript);
const here = __dirname;

// As docs/editors.md says.
const OPTIONS = {
  allowJs: true, checkJs: true, noEmit: true, target: ts.ScriptTarget.ES5, lib: ["lib.es5.d.ts"], types: [],
};
const STRICT = Object.assign({}, OPTIONS, {strict: true, useUnknownInCatchVariables: false});

let failures = 0;
function test(name, run) {
  try {
    run();
    console.log("ok      " + name);
  } catch (error) {
    failures++;
    console.log("FAILED  " + name + "\n" + (error.message || error));
  }
}

function lines(text) {
  return text.split("\n").filter((line) => line !== "");
}

// The compiler. Files that all programs have are parsed once.

const parsed = new Map();
function programOf(files, options) {
  const compiler = ts.createCompilerHost(options);
  const parse = compiler.getSourceFile;
  compiler.getSourceFile = function (name, ...rest) {
    if (!parsed.has(name)) parsed.set(name, parse.call(compiler, name, ...rest));
    return parsed.get(name);
  };
  return ts.createProgram([declarations, ...files], options, compiler);
}

// Versions differ in the names that they find similar.
const NO_SUCH_MEMBER = 2339;
const WITH_SUGGESTION = 2551;

// Errors as {file, line, code, text}.
function errorsOf(files, options = OPTIONS) {
  return ts.getPreEmitDiagnostics(programOf(files, options)).map((found) => ({
    file: found.file ? path.basename(found.file.fileName) : "",
    line: found.file ? found.file.getLineAndCharacterOfPosition(found.start).line + 1 : 0,
    code: found.code === WITH_SUGGESTION ? NO_SUCH_MEMBER : found.code,
    text: ts.flattenDiagnosticMessageText(found.messageText, "\n"),
  }));
}

function told(errors) {
  return errors.map((one) => `${one.file}:${one.line}: TS${one.code}: ${one.text}`).join("\n");
}

// The language service, for one script. Services share what they parse.
const registry = ts.createDocumentRegistry();
function serviceOf(text) {
  const files = new Map([["/script.js", text]]);
  return ts.createLanguageService({
    getCompilationSettings: () => OPTIONS,
    getScriptFileNames: () => [declarations, "/script.js"],
    getScriptVersion: (name) => files.get(name) || "1",
    getScriptSnapshot: (name) => {
      const content = files.has(name) ? files.get(name) : ts.sys.readFile(name);
      return content === undefined ? undefined : ts.ScriptSnapshot.fromString(content);
    },
    getCurrentDirectory: () => "/",
    getDefaultLibFileName: (options) => ts.getDefaultLibFilePath(options),
    fileExists: (name) => files.has(name) || ts.sys.fileExists(name),
    readFile: (name) => (files.has(name) ? files.get(name) : ts.sys.readFile(name)),
  }, registry);
}

// What an editor offers at the end of a text: the texts of the documentation by name.
function completionsAfter(text) {
  const service = serviceOf(text);
  const found = service.getCompletionsAtPosition("/script.js", text.length, {});
  const texts = {};
  for (const entry of found ? found.entries : []) {
    const details = service.getCompletionEntryDetails(
      "/script.js", text.length, entry.name, {}, entry.source, {}, entry.data);
    texts[entry.name] = details ? ts.displayPartsToString(details.documentation) : "";
  }
  return texts;
}

// What an editor shows for the last word of a text.
function quickInfoOf(text) {
  const info = serviceOf(text).getQuickInfoAtPosition("/script.js", text.length - 1);
  return {
    declaration: ts.displayPartsToString(info.displayParts), text: ts.displayPartsToString(info.documentation),
  };
}

// What the host says.

function run(program, ...words) {
  return childProcess.execFileSync(program, words, {encoding: "utf-8"});
}

// The help texts of the members of a class, as --describe prints them.
function described(progId) {
  const texts = {};
  let name = "";
  for (const line of lines(run(host, "--describe", progId))) {
    const member = /^ {2}(\w+)(?:\(| As |$)/.exec(line);
    if (member && !/^ {2}(in|interface|a) /.test(line)) name = member[1];
    if (/^ {6}\S/.test(line)) texts[name] = line.trim();
  }
  return texts;
}

// The members of the host's own classes: {class: {member: help}}.
function hostClasses() {
  const classes = {};
  for (const line of lines(run(listing))) {
    const [name, member, , , help] = line.split("\t");
    classes[name] = classes[name] || {};
    if (member !== "_NewEnum") classes[name][member] = help;
  }
  return classes;
}

// The names that objects of the engine have, by object.
function engineObjects() {
  const objects = {};
  for (const line of lines(run(host, path.join(project, "tests/worlds/script_objects.js")))) {
    const [name, member] = line.split("\t");
    objects[name] = objects[name] || [];
    if (!member.startsWith("_")) objects[name].push(member);
  }
  return objects;
}

function sorted(names) {
  return [...names].sort();
}

const PROG_IDS = ["HashObject", "Symmetric", "Number", "RSA", "ToviStreamDigest", "ToviStreamCrypt"].map(
  (name) => "Vardeko.crypt." + name);

test("the declarations have a licence and no error", () => {
  const text = fs.readFileSync(declarations, "utf-8");
  assert.match(text, /^\/\/ SPDX-License-Identifier: MIT\n\/\/ Mirolta \d+\.\d+\.\d+: /);
  assert.strictEqual(told(errorsOf([])), "");
  assert.strictEqual(told(errorsOf([], STRICT)), "");
});

test("right uses have no error", () => {
  for (const options of [OPTIONS, STRICT]) {
    assert.strictEqual(told(errorsOf([path.join(here, "right_uses.js")], options)), "");
  }
});

test("every wrong use is found", () => {
  const file = path.join(here, "wrong_uses.js");
  const expected = [];
  fs.readFileSync(file, "utf-8").split("\n").forEach((text, index) => {
    const wrong = /\/\/ (\d{4})/.exec(text);
    if (wrong) expected.push(`${index + 1}: TS${wrong[1]}`);
  });
  assert.ok(expected.length > 20);
  const found = errorsOf([file], STRICT);
  assert.deepStrictEqual(found.map((one) => `${one.line}: TS${one.code}`), expected, told(found));
});

test("every example is free of errors", () => {
  const folder = path.join(project, "examples");
  const names = fs.readdirSync(folder).filter((name) => name.endsWith(".js") && name !== "shared.js");
  assert.ok(names.length > 15);
  const errors = [];
  for (const name of names) {
    errors.push(...errorsOf([path.join(folder, "shared.js"), path.join(folder, name)]));
  }
  assert.strictEqual(told(errors), "");
});

test("the compiler's program finds what the service finds", () => {
  const words = ["--allowJs", "--checkJs", "--noEmit", "--target", "ES5", "--lib", "es5", declarations];
  const compiler = path.join(path.dirname(typeScript), "tsc.js");
  run(process.execPath, compiler, ...words, path.join(here, "right_uses.js"));
  assert.throws(() => run(process.execPath, compiler, ...words, path.join(here, "wrong_uses.js")), (error) =>
    error.stdout.includes("wrong_uses.js(4,6): error TS2339"));
});

test("members of a new object are completed with their help texts", () => {
  for (const progId of PROG_IDS) {
    const texts = described(progId);
    assert.ok(Object.keys(texts).length > 8, progId);
    assert.deepStrictEqual(completionsAfter(`new ActiveXObject("${progId}").`), texts, progId);
    assert.deepStrictEqual(
      completionsAfter(`var o = new ActiveXObject("${progId.toUpperCase()}");\no.`), texts, progId);
  }
});

test("members of the host's classes are completed with their help texts", () => {
  const classes = hostClasses();
  assert.ok(Object.keys(classes).length > 12);
  for (const name of Object.keys(classes)) {
    const type = name.includes(".") ? name : "Scripting." + name;
    const found = completionsAfter(`/** @type {${type}} */\nvar o;\no.`);
    // What functions have is offered for objects that can be called.
    for (const member of Object.keys(found)) {
      if (!Object.hasOwn(classes[name], member) && member in function () {}) delete found[member];
    }
    assert.deepStrictEqual(found, classes[name], name);
  }
});

test("classes that scripts create are completed", () => {
  const names = Object.keys(completionsAfter('new ActiveXObject("'));
  const listed = lines(run(host, "--list")).map((line) => /^ {4}(\S+)/.exec(line)).filter(Boolean).map((m) => m[1]);
  assert.ok(listed.length > 10);
  for (const name of listed) assert.ok(names.includes(name), name);
  for (const name of names) run(host, "-e", `new ActiveXObject(WScript.Arguments(0))`, name);
});

test("quick info has declaration and help text", () => {
  const info = quickInfoOf('var h = new ActiveXObject("Vardeko.crypt.HashObject");\nh.InitHash');
  assert.strictEqual(info.declaration, "(method) MIROLTALib.IHashObject.InitHash(bstrAlg: string): void");
  assert.strictEqual(info.text, described(PROG_IDS[0]).InitHash);
});

// Names that are the language's, or that docs/scripts.md says not to rely on.
function isOfPage(name) {
  const page = fs.readFileSync(path.join(project, "docs/scripts.md"), "utf-8");
  const row = page.split("\n").find((line) => line.includes("do not rely on them"));
  return row.includes("`" + name + "`") || name === "Buffer";
}

test("the objects of the engine are declared, each member with a text", () => {
  const objects = engineObjects();
  const script = {
    WScript: "WScript.", Bytes: "Bytes.", Enumerator: "new Enumerator(null).", VBArray: "new VBArray(null).",
  };
  for (const name of Object.keys(script)) {
    const found = completionsAfter(script[name]);
    assert.deepStrictEqual(sorted(Object.keys(found)), sorted(new Set(objects[name])), name);
    for (const member of Object.keys(found)) assert.ok(found[member].length > 5, `${name}.${member}`);
  }
  const names = objects.Global.filter((name) => !isOfPage(name));
  const text = names.map((name) => `void ${name};\n`).join("");
  fs.writeFileSync(path.join(process.cwd(), "globals.js"), text);
  assert.strictEqual(told(errorsOf([path.join(process.cwd(), "globals.js")])), "");
  const stream = lines(run(host, "-e", 'for (var name in WScript.MemoryStream()) WScript.Echo(name)'));
  const found = completionsAfter("WScript.MemoryStream().");
  for (const member of stream) assert.ok(found[member], member);
});

// The blocks of docs/editors.md, with the path of these declarations.
function blocksOfPage() {
  const page = fs.readFileSync(path.join(project, "docs/editors.md"), "utf-8");
  return page.split("```\n").filter((_, index) => index % 2 === 1).map((block) =>
    block.split("/usr/share/mirolta/mirolta.d.ts").join(path.resolve(declarations)));
}

test("the settings of the page check a folder and a script", () => {
  const [settings, references] = blocksOfPage();
  const folder = path.join(process.cwd(), "folder");
  fs.rmSync(folder, {recursive: true, force: true});
  fs.mkdirSync(folder);
  fs.writeFileSync(path.join(folder, "jsconfig.json"), settings);
  fs.writeFileSync(path.join(folder, "one.js"), 'WScript.Echo("text");\nWScript.Say("text");\n');
  const config = ts.parseJsonConfigFileContent(
    ts.readConfigFile(path.join(folder, "jsconfig.json"), ts.sys.readFile).config, ts.sys, folder, {},
    path.join(folder, "jsconfig.json"));
  assert.deepStrictEqual(config.errors, []);
  assert.strictEqual(config.fileNames.length, 2);
  const expected = /^one.js:\d: TS2339: Property 'Say' does not exist on type 'Host'.$/;
  assert.match(told(errorsOf([path.join(folder, "one.js")], config.options)), expected);

  fs.writeFileSync(path.join(folder, "one.js"), references + 'WScript.Echo("text");\nWScript.Say("text");\n');
  const program = ts.createProgram([path.join(folder, "one.js")], {allowJs: true, noEmit: true});
  const found = ts.getPreEmitDiagnostics(program).map((one) => one.code);
  assert.deepStrictEqual(found, [NO_SUCH_MEMBER]);
});

test("an assignment to a call is reported, and accepted behind @ts-ignore", () => {
  const file = path.join(process.cwd(), "assignment.js");
  const line = 'new ActiveXObject("Vardeko.crypt.Number").Text(65001) = "x";\n';
  fs.writeFileSync(file, line + "// @ts-ignore\n" + line);
  assert.deepStrictEqual(errorsOf([file]).map((one) => `${one.line}: ${one.code}`), ["1: 2364"]);
});

process.exit(failures === 0 ? 0 : 1);
