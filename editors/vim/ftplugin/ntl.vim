" What NTL is to the editor beside colours. g:ntl_command is the tool, g:ntl_serve = 0 keeps Neovim from starting its
" server.
if exists('b:did_ftplugin')
  finish
endif
let b:did_ftplugin = 1
let s:save = &cpoptions
set cpoptions&vim

setlocal comments=s1:/*,mb:*,ex:*/,:// commentstring=//\ %s
setlocal formatoptions-=t formatoptions+=croql
setlocal formatexpr=ntl#format()
setlocal iskeyword=@,48-57,_
setlocal expandtab shiftwidth=2 softtabstop=2
setlocal include=^\\s*\\%(INCLUDE\\\|INLINE\\)\\s suffixesadd=.btl
let &l:path = join(['.'] + filter(split($NTL_PATH, ':'), '!empty(v:val)'), ',')
let b:match_words = '\<if\>:\<else\>'
let b:match_ignorecase = 0
compiler ntl

let b:undo_ftplugin = 'setlocal comments< commentstring< formatoptions< formatexpr< iskeyword< expandtab< shiftwidth<'
      \ . ' softtabstop< include< suffixesadd< path< makeprg< errorformat<'
      \ . ' | unlet! b:match_words b:match_ignorecase b:current_compiler'

if has('nvim-0.7') && get(g:, 'ntl_serve', 1)
  lua require('ntl').start(vim.api.nvim_get_current_buf())
endif

let &cpoptions = s:save
unlet s:save
