-- A session in Neovim, with its own client and editors/vim: what is typed, and what is then to be seen. The tool is in
-- NTL_TOOL.
local folder = vim.fn.tempname()
vim.fn.mkdir(folder, "p")
local file = folder .. "/ümlaut.btl"
vim.fn.writefile({ 'library "L" {', 'block "ÄPFEL" {', 'pin "A" inpt;', "}", 'block "B" { pin "C" output; }', "}" }, file)

local function fail(what, got)
  io.stderr:write(what .. ": " .. vim.inspect(got) .. "\n")
  vim.cmd("cquit 1")
end
local function expect(what, condition, got)
  if not condition then fail(what, got) end
end

local function wait(what, condition, show)
  if not vim.wait(20000, condition, 20) then fail(what, show()) end
end

vim.g.ntl_command = os.getenv("NTL_TOOL")
vim.cmd("filetype plugin indent on")
vim.cmd("edit " .. vim.fn.fnameescape(file))
local buffer = vim.api.nvim_get_current_buf()
wait("the server starts", function() return next(vim.lsp.buf_get_clients(buffer)) end, vim.lsp.get_active_clients)
local client, started = next(vim.lsp.buf_get_clients(buffer))
expect("for its folder", started.config.root_dir == folder, started.config.root_dir)
local status
started.config.on_exit = function(code) status = code end
vim.cmd("split " .. vim.fn.fnameescape(folder .. "/other.btl"))
expect("one server for the folder", #vim.lsp.get_active_clients() == 1, #vim.lsp.get_active_clients())
vim.cmd("close")

local function diagnostics() return vim.diagnostic.get(buffer) end
local function codes()
  return vim.tbl_map(function(one) return one.code or one.user_data.lsp.code end, diagnostics())
end
local function ask(method)
  local params = { textDocument = vim.lsp.util.make_text_document_params(buffer),
                   options = { tabSize = 2, insertSpaces = true } }
  local answers, fault = vim.lsp.buf_request_sync(buffer, "textDocument/" .. method, params, 20000)
  expect(method, answers and answers[client] and not answers[client].err, fault or answers)
  return answers[client].result
end

-- A fault is shown where it is, goes when it is mended, and comes back.
wait("a fault is shown", function() return vim.tbl_contains(codes(), "misspelt-word") end, diagnostics)
local shown = vim.tbl_filter(function(one) return one.lnum == 2 end, diagnostics())[1]
expect("its place", shown and shown.col == 8 and shown.end_col == 12, shown)
vim.api.nvim_buf_set_text(buffer, 2, 8, 2, 12, { "input" })
wait("it is mended", function() return not vim.tbl_contains(codes(), "misspelt-word") end, diagnostics)
vim.api.nvim_buf_set_lines(buffer, 1, 2, false, { "// äöü 𝄞", 'block "ÄPFEL" { pin "Ü𝄞" input; pinn "Z" input;' })
wait("another one", function() return #vim.tbl_filter(function(one) return one.lnum == 2 end, diagnostics()) > 0 end,
     diagnostics)
local line = vim.api.nvim_buf_get_lines(buffer, 2, 3, false)[1]
local at = vim.tbl_filter(function(one) return one.lnum == 2 end, diagnostics())[1]
expect("behind characters of several bytes", line:sub(at.col + 1, at.end_col) == "pinn", at)
vim.api.nvim_buf_set_text(buffer, 2, at.col, 2, at.end_col, { "pin" })
wait("all is mended", function() return not vim.tbl_contains(codes(), "misspelt-word") end, diagnostics)

-- The outline, and the style of ntl format.
local names = {}
for _, symbol in ipairs(ask("documentSymbol")) do table.insert(names, symbol.name) end
expect("the outline", vim.tbl_contains(names, "ÄPFEL") or names[1] == "L", names)
vim.lsp.util.apply_text_edits(ask("formatting"), buffer, vim.lsp.get_client_by_id(client).offset_encoding)
local unsaved = folder .. "/formatted.btl"
vim.fn.writefile(vim.api.nvim_buf_get_lines(buffer, 0, -1, false), unsaved)
vim.fn.system({ os.getenv("NTL_TOOL"), "format", "--check", unsaved })
expect("the text is formatted", vim.v.shell_error == 0, vim.fn.readfile(unsaved))

-- What a block becomes, with an answer of the test's own.
local request = started.request
started.request = function(method, params, handler)
  expect("what is asked", method == "workspace/executeCommand" and params.arguments[1] == "ÄPFEL", params)
  handler(nil, { uri = "file:///x", block = "ÄPFEL", text = 'block "ÄPFEL" {\n}\n' })
end
vim.lsp.commands["ntl.expand"]({ command = "ntl.expand", arguments = { "ÄPFEL" } }, { client_id = client, bufnr = buffer })
started.request = request
local text = vim.api.nvim_buf_get_lines(0, 0, -1, false)
expect("it is shown", vim.bo.filetype == "ntl" and vim.bo.buftype == "nofile" and text[1] == 'block "ÄPFEL" {' and #text == 2,
       text)
expect("without a server", next(vim.lsp.buf_get_clients(0)) == nil, vim.lsp.buf_get_clients(0))
vim.cmd("close")

vim.lsp.stop_client(client)
wait("the server ends", function() return status ~= nil end, function() return status end)
expect("in good order", status == 0, status)
vim.fn.delete(folder, "rf")
vim.cmd("qall!")
