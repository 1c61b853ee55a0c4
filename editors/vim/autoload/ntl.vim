" As 'formatexpr': lays the lines out with `ntl format`, at the indent of the first one. What the tool refuses stays as
" it is, and the reason is shown. While text is typed, Vim does its own.
function! ntl#format() abort
  if mode() =~# '[iR]'
    return 1
  endif
  let l:last = v:lnum + v:count - 1
  let l:old = getline(v:lnum, l:last)
  let l:indent = repeat(' ', indent(nextnonblank(v:lnum)))
  let l:said = tempname()
  let l:command = shellescape(get(g:, 'ntl_command', 'ntl')) . ' format - 2>' . shellescape(l:said)
  let l:new = systemlist(l:command, l:old)
  let l:failed = v:shell_error
  let l:reason = filereadable(l:said) ? readfile(l:said) : []
  call delete(l:said)
  if l:failed
    echohl ErrorMsg | echomsg get(l:reason, 0, 'ntl format failed') | echohl None
    return 0
  endif
  call map(l:new, 'v:val =~# "^\\%(#ifArch\\|#endif\\|$\\)" ? v:val : l:indent . v:val')
  if l:new !=# l:old
    call append(l:last, l:new)
    execute 'silent keepjumps' v:lnum . ',' . l:last . 'delete _'
    call cursor(v:lnum, 1)
  endif
  return 0
endfunction

" The colours tell what is no code.
function! s:isIn(kinds) abort
  return synIDattr(synID(line('.'), col('.'), 1), 'name') =~# '^ntl\%(' . a:kinds . '\)'
endfunction

let s:comment = 'Comment\|Todo\|Include\|Directive'
let s:text = s:comment . '\|String\|OpenString'

" Goes to the last character of code before the line; false when there is none.
function! s:toCodeBefore(line) abort
  call cursor(a:line, 1)
  while search('\S', 'bW')
    if !s:isIn(s:comment)
      return 1
    endif
  endwhile
  return 0
endfunction

function! s:upToHere() abort
  return getline('.')[: col('.') - 1]
endfunction

" Goes to the open bracket around the cursor, and gives the text up to it; empty when there is none.
function! s:toBracket() abort
  return searchpair('[({]', '', '[)}]', 'bW', 's:isIn(s:text)') > 0 ? s:upToHere() : ''
endfunction

" Whether what follows the character under the cursor begins anew: behind 'head', the condition of an `if` or an `else`,
" a statement that belongs to it; behind 'option' another one; behind the character itself a statement. Empty: it goes
" on. Goes back over parentheses.
function! s:endsHere() abort
  let l:here = getcurpos()
  let l:text = s:upToHere()
  if l:text =~# ')$'
    return s:toBracket() =~# '\<if\s*($' ? 'head' : ''
  elseif l:text =~# ',$'
    let l:around = s:toBracket()
    call setpos('.', l:here)
    return l:around =~# '\<\%(property\|values\)\>[^{};]*{$' ? 'option' : ''
  endif
  return l:text =~# '\<else$' ? 'head' : matchstr(l:text, '[;{}]$')
endfunction

" The line that the statement of a line begins in; `outermost`: that of the `if` that it is the body of.
function! s:beginOf(line, outermost) abort
  let l:line = a:line
  while 1
    if getline(l:line) =~# '^\s*}'
      call cursor(l:line, match(getline(l:line), '}') + 1)
      let l:end = empty(s:toBracket()) ? '}' : ''
    else
      let l:end = s:toCodeBefore(l:line) ? s:endsHere() : ';'
    endif
    if !empty(l:end) && (l:end !=# 'head' || !a:outermost)
      return l:line
    endif
    let l:line = line('.')
  endwhile
endfunction

" As 'indentexpr': the indent that `ntl format` gives a line.
function! ntl#indent(line) abort
  let l:text = getline(a:line)
  call cursor(a:line, 1)
  if l:text =~# '^#\%(ifArch\|endif\)'
    return 0
  elseif s:isIn('Comment') && l:text !~# '^\s*/[/*]'
    return l:text =~# '^\s*\*' ? indent(search('/\*', 'bnW')) + 1 : -1
  elseif l:text =~# '^\s*}'
    return indent(s:beginOf(a:line, 0))
  elseif l:text =~# '^\s*else\w\@!' && searchpair('\<if\>', '', '\<else\>', 'bW', 's:isIn(s:text)') > 0
    return indent(s:beginOf(line('.'), 0))
  elseif !s:toCodeBefore(a:line)
    return 0
  endif
  let l:before = line('.')
  let l:step = l:text =~# '^\s*{' ? 0 : shiftwidth()
  let l:end = s:endsHere()
  if l:end ==# 'head'
    return indent(s:beginOf(line('.'), 0)) + l:step
  elseif l:end ==# '{'
    return indent(s:beginOf(l:before, 0)) + shiftwidth()
  elseif l:end =~# '[;}]' || l:end ==# 'option'
    return indent(s:beginOf(l:before, 1))
  endif
  return indent(s:beginOf(l:before, 0)) + 2 * l:step
endfunction
