" Colours of NTL, token by token as its scanner reads them.
if exists('b:current_syntax')
  finish
endif
let s:save = &cpoptions
set cpoptions&vim

syntax case match

" Of matches that begin at the same place the last one counts. Words are taken whole, so that a keyword is none within
" another word, but is one right behind a number.
syntax match ntlFunction /[A-Za-z_]\w*/
for [s:group, s:words] in items({
      \ 'Statement': 'library block pin property function pinlist end mapsto expandsto retargetsto modifiedby inst connect assign signal',
      \ 'Conditional': 'if else',
      \ 'Type': 'int double bool string',
      \ 'Constant': 'true false NULL',
      \ 'Attribute': 'input output bidir internal data clock clear enable mixed preset reset set setreset writeEnable tieLow tieHigh tieSpecial untie active mustConnect test abstract early beta production deprecated',
      \ 'Option': 'primgroup maturityLevel values min max default precision units description simulation constraintsOnly muxControl',
      \ })
  execute 'syntax match ntl' . s:group . ' /\%(' . join(split(s:words), '\|') . '\)\w\@!/'
endfor
unlet s:group s:words

syntax match ntlNumber /-\=\d\+\%(\.\d*\)\=/
syntax match ntlNumber /\d\+'\%(h\x*\|b[01]*\)/
syntax match ntlOpenString /".*/
syntax match ntlString /"[^"]*"/ contains=@Spell
syntax keyword ntlTodo TODO FIXME XXX contained
syntax match ntlComment +//.*+ contains=ntlTodo,@Spell
syntax region ntlComment start=+/\*+ end=+\*/+ contains=ntlTodo,@Spell

" The name begins in the line that has the semicolon; what follows in that line is dropped.
syntax region ntlIncludeName matchgroup=ntlInclude start=/\%(INCLUDE\|INLINE\)\w\@!/ matchgroup=ntlIncludeRest end=/;.*/
syntax match ntlDirective /^#\%(ifArch\|endif\).*/

if line('$') < 20000
  syntax sync fromstart
else
  syntax sync minlines=500
endif

highlight default link ntlStatement Statement
highlight default link ntlConditional Conditional
highlight default link ntlType Type
highlight default link ntlConstant Constant
highlight default link ntlAttribute StorageClass
highlight default link ntlOption Label
highlight default link ntlFunction Function
highlight default link ntlNumber Number
highlight default link ntlString String
highlight default link ntlOpenString Error
highlight default link ntlComment Comment
highlight default link ntlTodo Todo
highlight default link ntlInclude Include
highlight default link ntlIncludeName String
highlight default link ntlIncludeRest Comment
highlight default link ntlDirective PreProc

let b:current_syntax = 'ntl'
let &cpoptions = s:save
unlet s:save
