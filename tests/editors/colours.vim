" Writes the colours that Vim or Neovim gives the files of $COLOUR_FILES to $COLOUR_OUTPUT, as editor_tokens does.
set nocompatible noswapfile synmaxcol=0 redrawtime=600000
syntax on
filetype plugin indent on
let g:ntl_serve = 0
let s:letters = {'Comment': 'c', 'Todo': 'c', 'String': 's', 'OpenString': 'o', 'Number': 'n', 'Function': 'f',
      \ 'Include': 'p', 'IncludeName': 'p', 'IncludeRest': 'p', 'Directive': 'p', '': '.'}

function s:letterAt(line, column) abort
  let l:name = synIDattr(synID(a:line, a:column, 1), 'name')
  return get(s:letters, substitute(l:name, '^ntl', '', ''), l:name =~# '^ntl' ? 'k' : '?')
endfunction

function s:lettersOf(file) abort
  " Without decoding, so that every byte stays.
  let l:lines = readfile(a:file, 'b')
  execute 'silent edit' fnameescape(a:file)
  silent %delete _
  call setline(1, l:lines)
  let l:result = ['== ' . a:file]
  for l:number in range(1, len(l:lines))
    let l:text = l:lines[l:number - 1]
    call add(l:result, join(map(range(len(l:text)),
          \ {_, at -> l:text[at] =~# '[ \t]' ? l:text[at] : s:letterAt(l:number, at + 1)}), ''))
  endfor
  bwipeout!
  return l:result
endfunction

try
  let s:all = []
  for s:file in readfile($COLOUR_FILES)
    let s:all += s:lettersOf(s:file)
  endfor
  call writefile(s:all, $COLOUR_OUTPUT)
catch
  call writefile([v:exception, v:throwpoint], $COLOUR_OUTPUT)
  cquit!
endtry
qall!
