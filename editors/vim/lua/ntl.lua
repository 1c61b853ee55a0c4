-- The language server in Neovim.
local M = {}

local clients = {} -- the server of each folder, for versions without vim.lsp.start

local function start(config, buffer)
  if vim.lsp.start then return vim.lsp.start(config, { bufnr = buffer }) end
  local client = clients[config.root_dir]
  if not client or not vim.lsp.get_client_by_id(client) then
    client = vim.lsp.start_client(config)
    clients[config.root_dir] = client
  end
  if client then vim.lsp.buf_attach_client(buffer, client) end
end

local function showLenses(buffer)
  vim.api.nvim_create_autocmd({ "BufEnter", "InsertLeave", "BufWritePost" }, {
    group = vim.api.nvim_create_augroup("ntl-lenses-" .. buffer, {}),
    buffer = buffer,
    callback = function()
      if vim.api.nvim_get_current_buf() == buffer then vim.lsp.codelens.refresh() end
    end,
  })
  vim.lsp.codelens.refresh()
end

--- Shows what a block becomes: asks the server for it and opens the text in a window of its own.
function M.expand(command, context)
  local client = vim.lsp.get_client_by_id(context.client_id)
  local function request(...)
    if vim.fn.has("nvim-0.11") == 1 then return client:request(...) end
    return client.request(...)
  end
  local params = { command = command.command, arguments = command.arguments }
  request("workspace/executeCommand", params, function(fault, result)
    if fault then return vim.notify(fault.message, vim.log.levels.ERROR) end
    if not result or not result.text then return end
    vim.cmd("new")
    local buffer = vim.api.nvim_get_current_buf()
    vim.bo[buffer].buftype = "nofile"
    vim.bo[buffer].bufhidden = "wipe"
    vim.bo[buffer].swapfile = false
    vim.api.nvim_buf_set_lines(buffer, 0, -1, false, vim.split(vim.trim(result.text), "\n"))
    vim.bo[buffer].filetype = "ntl"
  end, context.bufnr)
end

--- Starts the server for a buffer of a file, or joins the one that serves its folder.
function M.start(buffer)
  local command = vim.g.ntl_command or "ntl"
  local file = vim.api.nvim_buf_get_name(buffer)
  if vim.bo[buffer].buftype ~= "" or file == "" or vim.fn.executable(command) == 0 then return end
  local folder = vim.fn.fnamemodify(file, ":p:h")
  local project = vim.fn.findfile(".ntl.cfg", vim.fn.escape(folder, " ,;") .. ";")
  vim.lsp.commands["ntl.expand"] = M.expand
  start({
    name = "ntl",
    cmd = { command, "serve" },
    root_dir = project ~= "" and vim.fn.fnamemodify(project, ":p:h") or folder,
    on_attach = function(client, attached)
      local provides = client.server_capabilities or client.resolved_capabilities
      if provides.codeLensProvider then showLenses(attached) end
    end,
  }, buffer)
end

return M
