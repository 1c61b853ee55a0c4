if exists('b:did_indent')
  finish
endif
let b:did_indent = 1

setlocal indentexpr=ntl#indent(v:lnum) indentkeys=0{,0},0#,!^F,o,O,e
let b:undo_indent = 'setlocal indentexpr< indentkeys<'
