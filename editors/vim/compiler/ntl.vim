" `:make %` checks the file, `:make %:h` the folder as one library.
if exists('current_compiler')
  finish
endif
let current_compiler = 'ntl'
let s:save = &cpoptions
set cpoptions&vim

execute 'CompilerSet makeprg=' . escape(shellescape(get(g:, 'ntl_command', 'ntl')), ' \|"') . '\ check\ --format\ short\ $*'
CompilerSet errorformat=%f:%l:%c:\ %t%*[a-z]:\ %m,%f:%l:\ %t%*[a-z]:\ %m,%f:\ %t%*[a-z]:\ %m,%-Gntl:\ %.%#

let &cpoptions = s:save
unlet s:save
