# NTL cell libraries: colours, indentation and the tool.

hook global BufCreate .*\.btl %{ set-option buffer filetype ntl }

hook global BufSetOption filetype=ntl %{
    set-option buffer comment_line '//'
    set-option buffer comment_block_begin '/*'
    set-option buffer comment_block_end '*/'
    set-option buffer indentwidth 2
    set-option buffer formatcmd 'ntl format -'
    set-option buffer makecmd %sh{ printf 'ntl check --format short %s' "$kak_quoted_buffile" }
}

hook global WinSetOption filetype=ntl %[
    add-highlighter window/ntl ref ntl
    hook -group ntl window InsertChar \n ntl-indent-new-line
    hook -group ntl window InsertChar \} ntl-indent-closing-brace
    hook -once -always window WinSetOption filetype=.* %[
        remove-highlighter window/ntl
        remove-hooks window ntl
    ]
]

# Of regions that begin at the same place the first one counts. Tokens without a blank between them are one region, so
# that a file statement in the middle of a word begins nothing, but one right behind a number does.
add-highlighter shared/ntl regions
add-highlighter shared/ntl/directive region ^#(?:ifArch|endif) $ fill meta
add-highlighter shared/ntl/comment region /\* \*/ fill comment
add-highlighter shared/ntl/line-comment region // $ fill comment
add-highlighter shared/ntl/open-string region '"[^"\n]*$' (?=.) fill Error
add-highlighter shared/ntl/string region '"' '"' fill string
add-highlighter shared/ntl/include region '(?<![g-zG-Z_])(?:INCLUDE|INLINE)(?![A-Za-z0-9_])[^;\n]*;[^\n]*' (?=.) fill meta
add-highlighter shared/ntl/long-include region '(?:INCLUDE|INLINE)(?![A-Za-z0-9_])[^;\n]*$' ';[^\n]*' fill meta
add-highlighter shared/ntl/tokens region "(?:[0-9]+'(?:h[0-9A-Fa-f]*|b[01]*)|-?[0-9]+(?:\.[0-9]*)?|(?!INCLUDE[^A-Za-z0-9_])(?!INLINE[^A-Za-z0-9_])[A-Za-z_][A-Za-z0-9_]*)+" (?=.) \
    regex "([0-9]+'(?:h[0-9A-Fa-f]*|b[01]*)|-?[0-9]+(?:\.[0-9]*)?)|(library|block|pin|property|function|pinlist|end|mapsto|expandsto|retargetsto|modifiedby|inst|connect|assign|signal|if|else)(?![A-Za-z0-9_])|(int|double|bool|string)(?![A-Za-z0-9_])|(true|false|NULL)(?![A-Za-z0-9_])|(input|output|bidir|internal|data|clock|clear|enable|mixed|preset|reset|set|setreset|writeEnable|tieLow|tieHigh|tieSpecial|untie|active|mustConnect|test|abstract|early|beta|production|deprecated)(?![A-Za-z0-9_])|(primgroup|maturityLevel|values|min|max|default|precision|units|description|simulation|constraintsOnly|muxControl)(?![A-Za-z0-9_])|([A-Za-z_][A-Za-z0-9_]*)" \
    1:value 2:keyword 3:type 4:builtin 5:attribute 6:variable 7:function

define-command -hidden ntl-indent-new-line %[
    evaluate-commands -draft -itersel %[
        try %[ execute-keys -draft <semicolon> K <a-&> ]
        try %[ execute-keys -draft k x s \h+$ <ret> d ]
        try %[ execute-keys -draft k x <a-k> [{(]\h*(?://[^\n]*)?$ <ret> j <a-gt> ]
    ]
]

define-command -hidden ntl-indent-closing-brace %[
    evaluate-commands -draft -itersel %[
        try %[ execute-keys -draft <a-h> <a-k> ^\h+\}$ <ret> h m s \A|.\z <ret> 1<a-&> ]
    ]
]
