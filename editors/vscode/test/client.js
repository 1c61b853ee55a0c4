// Runs the packaged extension outside of Visual Studio Code: the client is the real one and speaks to the real server,
// $NTL_TOOL; what it calls of the editor is a stand-in, which knows one document and keeps what it is told to show.
const fs = require("fs");
const Module = require("module");
const os = require("os");
const path = require("path");

const bundle = path.join(__dirname, "../dist/extension.js");
if (!fs.existsSync(bundle)) {
  console.error("the extension is not built: run npm ci && npm run package in editors/vscode");
  process.exit(77);
}

// Anything: a class, a function and an object whose members are such things, too.
const anything = () =>
  new Proxy(class { dispose() {} }, {
    get: (target, name) => {
      if (name === "then" || name === Symbol.iterator) return undefined;
      if (name === "prototype" || Object.hasOwn(target, name)) return target[name];
      return (target[name] = anything());
    },
    apply: anything,
  });
const standIn = (members) => Object.assign(anything(), members);

const folder = fs.mkdtempSync(path.join(os.tmpdir(), "ntl"));
const uri = { scheme: "file", fsPath: path.join(folder, "faulty.btl"), toString: () => "file://" + uri.fsPath };
const text = 'library "L" {\n  block "B" { pin "A" inpt; }\n}\n';
fs.writeFileSync(uri.fsPath, text);
const document = { uri, languageId: "ntl", version: 1, getText: () => text, isClosed: false };

const shown = { diagnostics: [], documents: [] };
const commands = {};
class Position {
  constructor(line, character) {
    Object.assign(this, { line, character });
  }
}
class Range {
  constructor(a, b, c, d) {
    Object.assign(this, c === undefined ? { start: a, end: b } : { start: new Position(a, b), end: new Position(c, d) });
  }
}
class Diagnostic {
  constructor(range, message, severity) {
    Object.assign(this, { range, message, severity });
  }
}
class EventEmitter {
  listeners = [];
  event = (listener) => (this.listeners.push(listener), { dispose() {} });
  fire = (value) => this.listeners.forEach((each) => each(value));
  dispose() {}
}
class CancellationTokenSource {
  token = { isCancellationRequested: false, onCancellationRequested: () => ({ dispose() {} }) };
  dispose() {}
}
const vscode = standIn({
  version: "1.82.0",
  Position,
  Range,
  Diagnostic,
  EventEmitter,
  CancellationTokenSource,
  ViewColumn: { Beside: -2 },
  Uri: standIn({ parse: (value) => ({ toString: () => value, scheme: "file" }) }),
  commands: standIn({
    registerCommand: (name, call) => ((commands[name] = call), { dispose: () => delete commands[name] }),
  }),
  languages: standIn({
    match: (selector, each) => (each.languageId === "ntl" ? 10 : 0),
    createDiagnosticCollection: () => ({
      set: (_, diagnostics) => (shown.diagnostics = diagnostics),
      delete() {},
      clear: () => (shown.diagnostics = []),
      dispose() {},
    }),
  }),
  window: standIn({
    createOutputChannel: () => ({ append() {}, appendLine: (line) => console.log(line), dispose() {} }),
    showErrorMessage: async (message) => fail(message),
    showTextDocument: async (each) => shown.documents.push(each),
    visibleTextEditors: [],
    activeTextEditor: undefined,
  }),
  workspace: standIn({
    textDocuments: [document],
    workspaceFolders: undefined,
    notebookDocuments: [],
    getConfiguration: () => ({ get: (name, otherwise) => (name === "command" ? process.env.NTL_TOOL : otherwise) }),
    openTextDocument: async (each) => each,
  }),
});

function fail(what) {
  console.error(what);
  process.exit(1);
}
async function wait(what, condition) {
  for (let i = 0; i < 400 && !condition(); ++i) await new Promise((done) => setTimeout(done, 50));
  if (!condition()) fail(`${what}: ${JSON.stringify(shown)}`);
}

const load = Module._load;
Module._load = (name, ...rest) => (name === "vscode" ? vscode : load(name, ...rest));

async function main() {
  const extension = require(bundle);
  await extension.activate({ subscriptions: [] });
  await wait("a fault is shown", () => shown.diagnostics.some((each) => each.code === "misspelt-word"));
  const { range } = shown.diagnostics.find((each) => each.code === "misspelt-word");
  if (range.start.line !== 1 || range.start.character !== 22) fail(`its place: ${JSON.stringify(range)}`);
  // What a block becomes, with an answer of the test's own.
  const answer = { uri: "file:///x", block: "A", text: 'block "A" { }' };
  await extension.executeCommand("ntl.expand", [], async () => answer);
  if (shown.documents.length !== 1 || shown.documents[0].content !== answer.text) fail(JSON.stringify(shown.documents));
  await commands["ntl.restart"]();
  await wait("a fault is shown again", () => shown.diagnostics.some((each) => each.code === "misspelt-word"));
  await extension.deactivate();
  fs.rmSync(folder, { recursive: true });
  process.exit(0);
}

main().catch((fault) => fail(fault.stack));
