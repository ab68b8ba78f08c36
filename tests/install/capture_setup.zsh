# SPDX-License-Identifier: Apache-2.0
# What the second shell of capture.zsh needs before it completes a line.
PROMPT=
unsetopt zle_bracketed_paste 2>/dev/null
autoload -Uz compinit
compinit -u -D
bindkey '^I' complete-word
begin_of_capture() { print -r -- zz-begin-zz }
end_of_capture() { print -r -- zz-end-zz }
compprefuncs=(begin_of_capture)
comppostfuncs=(end_of_capture)
# Prints the words, and adds them: functions of the shell look at how many there are.
compadd() {
    if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then
        builtin compadd "$@"
        return
    fi
    local -a hits suffix
    builtin compadd -A hits "$@"
    zparseopts -E -a ignored S:=suffix
    (( ! $#hits )) || print -rl -- ${^hits}${suffix[2]%[ ]}
    builtin compadd "$@"
}
