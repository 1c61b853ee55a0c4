const vscode = require("vscode");
const { LanguageClient } = require("vscode-languageclient/node");

let client;

/** Shows what a block becomes in a document beside the text. */
async function show(expansion) {
  const document = await vscode.workspace.openTextDocument({ language: "ntl", content: expansion.text });
  await vscode.window.showTextDocument(document, { viewColumn: vscode.ViewColumn.Beside });
}

exports.executeCommand = async (command, args, next) => {
  const result = await next(command, args);
  if (command === "ntl.expand" && result && result.text) await show(result);
  return result;
};

function start() {
  const command = vscode.workspace.getConfiguration("ntl").get("command");
  const options = {
    documentSelector: [{ scheme: "file", language: "ntl" }],
    middleware: { executeCommand: exports.executeCommand },
  };
  client = new LanguageClient("ntl", "NTL", { command, args: ["serve"] }, options);
  return client.start();
}

const stop = () => (client && client.needsStop() ? client.stop() : undefined);

exports.activate = (context) => {
  const restart = async () => {
    await stop();
    await start();
  };
  context.subscriptions.push(vscode.commands.registerCommand("ntl.restart", restart));
  return start().catch(() => undefined); // the client has said why
};

exports.deactivate = stop;
