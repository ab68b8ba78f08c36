# SPDX-License-Identifier: Apache-2.0

# _zanl_profile_kind PATH WHAT NAME: sets REPLY to the kind of the option's value, or of the argument of this number.
_zanl_profile_kind() {
    local row path_of_row fields fallback=none
    for row in ${(f)_zanl_profile_table}; do
        fields=("${(@s:|:)row}")
        [[ $fields[2] == $2 && $fields[3] == $3 ]] || continue
        if [[ $fields[1] == $1 ]]; then
            REPLY=$fields[4]
            return
        fi
        # Options may stand before the command that they are of.
        [[ $2 != option ]] || fallback=$fields[4]
    done
    REPLY=$fallback
}

# _zanl_profile_names PATH WHAT: sets reply to "NAME:TEXT" of the commands or options.
_zanl_profile_names() {
    local row fields
    reply=()
    for row in ${(f)_zanl_profile_table}; do
        fields=("${(@s:|:)row}")
        [[ $fields[1] != $1 || $fields[2] != $2 ]] || reply+=("$fields[3]:${(j:|:)fields[5,-1]}")
    done
}

# _zanl_profile_describe WHAT [-o]: offers what is in reply; -o: these are options.
_zanl_profile_describe() {
    local -a rows=($reply)
    _describe ${=2:--t commands} $1 rows
}

# Sets reply to the names of the sections of the package on the line.
_zanl_profile_sections() {
    reply=()
    [[ -z $zanl_package ]] || reply=(${(f)"$($zanl_program package list --names $zanl_package 2>/dev/null)"})
}

# _zanl_profile_values KIND: offers what may stand at the cursor.
_zanl_profile_values() {
    case $1 in
        words:*) compadd -- ${(s:,:)1#*:} ;;
        files:*) _files -g "*.(${${1#*:}//,/|})(-.)" ;;
        files) _files ;;
        command) _zanl_profile_names "$zanl_arguments" command && _zanl_profile_describe command ;;
        section) _zanl_profile_sections && compadd -a reply ;;
        section_file)
            if compset -P '*='; then
                _files
            else
                _zanl_profile_sections && compadd -S = -a reply
            fi
            ;;
    esac
}

_zanl_profile() {
    local zanl_program=${(Q)words[1]/#\~/$HOME} zanl_package= command_path= expected=none no_options= word REPLY
    local -a zanl_arguments reply
    for word in ${(Q)words[2,CURRENT-1]}; do
        if [[ $expected != none ]]; then
            expected=none
            continue
        elif [[ -z $no_options && $word == -- ]]; then
            no_options=1
            continue
        elif [[ -z $no_options && $word == -?* ]]; then
            if [[ $word != *=* ]]; then
                _zanl_profile_kind "$command_path" option $word
                expected=$REPLY
            fi
            continue
        fi
        _zanl_profile_names "$command_path" command
        if (( ! $#zanl_arguments && $#reply && ${reply[(I)$word:*]} )); then
            command_path+=${command_path:+ }$word
        else
            zanl_arguments+=($word)
            [[ -n $zanl_package || $word != *zanx ]] || zanl_package=${word/#\~/$HOME}
        fi
    done
    if [[ $expected != none ]]; then
        _zanl_profile_values $expected
    elif [[ -z $no_options && $words[CURRENT] == --*=* ]]; then
        _zanl_profile_kind "$command_path" option ${words[CURRENT]%%=*}
        compset -P '*='
        _zanl_profile_values $REPLY
    elif [[ -z $no_options && $words[CURRENT] == -* ]]; then
        _zanl_profile_names "$command_path" option
        _zanl_profile_describe option -o
    else
        _zanl_profile_names "$command_path" command
        if (( $#reply )); then
            _zanl_profile_describe command
            return
        fi
        _zanl_profile_kind "$command_path" argument $(( $#zanl_arguments + 1 ))
        [[ $REPLY != none ]] || _zanl_profile_kind "$command_path" argument more
        _zanl_profile_values $REPLY
    fi
}

# The file is a function that the shell loads when it is needed, or is read as a script.
if [[ $funcstack[1] == _zanl-profile ]]; then
    _zanl_profile "$@"
else
    compdef _zanl_profile zanl-profile
fi
