" What Vim and Neovim do with a text without a server: indent, layout, the list of errors. The tool is $NTL_TOOL.
set nocompatible noswapfile hidden
syntax on
filetype plugin indent on
let g:ntl_serve = 0
let g:ntl_command = $NTL_TOOL
let s:folder = tempname()
call mkdir(s:folder)

function s:expect(what, got, wanted) abort
  if a:got !=# a:wanted
    call writefile([a:what . ':'] + map(copy(a:got), '"  " . v:val') + ['but not:'] + map(copy(a:wanted), '"  " . v:val'), '/dev/stderr')
    cquit!
  endif
endfunction

function s:open(name, lines) abort
  call writefile(a:lines, s:folder . '/' . a:name)
  execute 'silent edit!' s:folder . '/' . a:name
endfunction

try
  " Shipped texts are laid out by `ntl format`; their indent comes back when it is lost. So does that of a text with
  " braces on lines of their own, and of what does not match.
  let s:odd = ['library "l"', '{', '  block "B"', '  {', '    pin "A"', '        input;', '  }', '}', '}', ')']
  let s:files = []
  for s:name in ['maplib/*', 'examples/f*', 'simulation', 'tessels/15*', 'tessels/7*']
    let s:files += glob($NTL_SOURCE_DIR . '/data/' . s:name . '.btl', 0, 1)
  endfor
  call s:expect('texts', [len(s:files) >= 10], [1])
  for s:neat in map(s:files, 'readfile(v:val)') + [s:odd]
    call s:open('indent.btl', map(copy(s:neat), 'substitute(v:val, "^ \\+", "", "")'))
    call s:expect('filetype', [&filetype], ['ntl'])
    silent normal! gg=G
    call s:expect('indent', getline(1, '$'), s:neat)
  endfor

  call s:open('format.btl', ['library "l" {', '  block "B" {', '', '    pin   "A" input ;', '    pin "LONG"  input;', '  }', '}'])
  silent normal! 3Ggq2j
  call s:expect('layout of lines', getline(3, 6), ['    pin "A"    input;', '    pin "LONG" input;', '  }', '}'])

  call s:open('refused.btl', ['block "B" {', '    pin  "A input;', '}'])
  silent normal! gggqG
  call s:expect('what is refused stays', getline(1, '$'), readfile(s:folder . '/refused.btl'))

  call s:open('faulty.btl', ['library "l" {', '  block "B" {', '    pin "A" inpt;', '  }', '  block "C" { }', '}'])
  silent make! %
  let s:found = map(filter(getqflist(), 'v:val.valid'), 'fnamemodify(bufname(v:val.bufnr), ":t") . ":" . v:val.lnum . ":" . v:val.col . " " . v:val.type')
  call s:expect('list of errors', s:found, ['faulty.btl:3:13 e', 'faulty.btl:5:3 w'])
catch
  call writefile([v:exception, v:throwpoint], '/dev/stderr')
  cquit!
endtry
call delete(s:folder, 'rf')
qall!
