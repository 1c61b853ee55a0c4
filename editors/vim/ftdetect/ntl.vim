autocmd BufNewFile,BufRead *.btl setfiletype ntl
