// Writes the colours that the grammar gives the files of $COLOUR_FILES to $COLOUR_OUTPUT, as editor_tokens does.
const fs = require("fs");
const path = require("path");

let textmate, oniguruma;
try {
  textmate = require("vscode-textmate");
  oniguruma = require("vscode-oniguruma");
} catch {
  console.error("the packages are missing: run npm ci in editors/vscode");
  process.exit(77);
}

const letters = [
  [/^meta\.preprocessor/, "p"],
  [/^comment/, "c"],
  [/^string/, "s"],
  [/^invalid\.illegal\.open-string/, "o"],
  [/^constant\.numeric/, "n"],
  [/^entity\.name\.function/, "f"],
  [/^(storage|support|keyword|constant\.language)/, "k"],
];

function letterOf(scopes) {
  if (scopes.length === 1) return ".";
  const found = letters.find(([pattern]) => pattern.test(scopes[1]));
  return found ? found[1] : "?";
}

async function main() {
  const wasm = fs.readFileSync(require.resolve("vscode-oniguruma/release/onig.wasm"));
  await oniguruma.loadWASM(wasm);
  const file = path.join(__dirname, "../syntaxes/ntl.tmLanguage.json");
  const registry = new textmate.Registry({
    onigLib: Promise.resolve({
      createOnigScanner: (patterns) => new oniguruma.OnigScanner(patterns),
      createOnigString: (text) => new oniguruma.OnigString(text),
    }),
    loadGrammar: async () => textmate.parseRawGrammar(fs.readFileSync(file, "utf8"), file),
  });
  const grammar = await registry.loadGrammar("source.ntl");
  let output = "";
  for (const name of fs.readFileSync(process.env.COLOUR_FILES, "utf8").split("\n").filter(Boolean)) {
    output += `== ${name}\n`;
    let state = textmate.INITIAL;
    const lines = fs.readFileSync(name, "latin1").split("\n"); // a character for each byte
    output += lines
      .map((line) => {
        const result = grammar.tokenizeLine(line, state);
        state = result.ruleStack;
        const of = (at) => result.tokens.find((token) => token.startIndex <= at && at < token.endIndex);
        return [...line].map((char, at) => (/[ \t]/.test(char) ? char : letterOf(of(at).scopes))).join("");
      })
      .join("\n");
    output += "\n";
  }
  fs.writeFileSync(process.env.COLOUR_OUTPUT, output);
}

main();
