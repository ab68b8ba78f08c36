# SPDX-License-Identifier: Apache-2.0

# Sets zanl_words to the words up to the cursor, with those joined that bash takes apart at "=" and ":".
_zanl_profile_words() {
    local line=${COMP_LINE:0:COMP_POINT} word joined= index
    zanl_words=()
    for ((index = 0; index <= COMP_CWORD; index++)); do
        word=${COMP_WORDS[index]}
        # Without a blank before it, the word belongs to the one before.
        if [[ $index -gt 0 && $line != [[:space:]]* && ($word == [=:]* || $joined == *[=:]) ]]; then
            joined+=$word
            zanl_words[${#zanl_words[@]} - 1]=$joined
        else
            joined=$word
            zanl_words+=("$joined")
        fi
        line=${line#"${line%%[![:space:]]*}"}
        line=${line#"$word"}
    done
}

# _zanl_profile_kind PATH WHAT NAME: the kind of the option's value, or of the argument of this number.
_zanl_profile_kind() {
    local path what name kind text fallback=none
    while IFS='|' read -r path what name kind text; do
        [[ $what == "$2" && $name == "$3" ]] || continue
        if [[ $path == "$1" ]]; then
            echo "$kind"
            return
        fi
        # Options may stand before the command that they are of.
        [[ $what != option ]] || fallback=$kind
    done <<<"$_zanl_profile_table"
    echo "$fallback"
}

# _zanl_profile_names PATH WHAT: the names of the commands or options.
_zanl_profile_names() {
    local path what name kind text
    while IFS='|' read -r path what name kind text; do
        [[ $path != "$1" || $what != "$2" ]] || echo "$name"
    done <<<"$_zanl_profile_table"
}

# The names of the sections of the package on the line, quoted: a name that is put on a command line must not do anything.
_zanl_profile_sections() {
    local name
    [[ $zanl_package ]] || return
    while IFS= read -r name; do
        printf '%q\n' "$name"
    done < <("$zanl_program" package list --names "${zanl_package/#\~\//$HOME/}" 2>/dev/null)
}

# _zanl_profile_files WORD [ENDING,...]: files with these endings, or all, and folders.
_zanl_profile_files() {
    local file endings=${2:-}
    compopt -o filenames 2>/dev/null
    while IFS= read -r file; do
        if [[ -d $file || -z $endings || ,$endings, == *,"${file##*.}",* ]]; then
            COMPREPLY+=("$file")
        fi
    done < <(compgen -f -- "$1")
}

# _zanl_profile_values KIND WORD: what may stand for the word.
_zanl_profile_values() {
    local name names kind=$1 word=$2
    case $kind in
        words:*) names=${kind#*:} names=${names//,/$'\n'} ;;
        section) names=$(_zanl_profile_sections) ;;
        command) names=$(_zanl_profile_names "${zanl_arguments[*]}" command) ;;
        files:*) _zanl_profile_files "$word" "${kind#*:}"; return ;;
        files) _zanl_profile_files "$word"; return ;;
        section_file)
            if [[ $word == *=* ]]; then
                _zanl_profile_files "${word#*=}"
                return
            fi
            compopt -o nospace 2>/dev/null
            names=$(_zanl_profile_sections | sed 's/$/=/')
            ;;
        *) return ;;
    esac
    while IFS= read -r name; do
        [[ -z $name || $name != "$word"* ]] || COMPREPLY+=("$name")
    done <<<"$names"
}

_zanl_profile() {
    local zanl_words zanl_program zanl_package= zanl_arguments=() path= expected= no_options= word commands kind
    _zanl_profile_words
    zanl_program=${zanl_words[0]/#\~\//$HOME/}
    local current=${zanl_words[${#zanl_words[@]} - 1]}
    COMPREPLY=()
    for word in "${zanl_words[@]:1:${#zanl_words[@]}-2}"; do
        if [[ $expected ]]; then
            expected=
        elif [[ -z $no_options && $word == -- ]]; then
            no_options=1
        elif [[ -z $no_options && $word == -?* ]]; then
            [[ $word == *=* ]] || expected=$(_zanl_profile_kind "$path" option "$word")
            [[ $expected != none ]] || expected=
        elif [[ ${#zanl_arguments[@]} -eq 0 && $'\n'$(_zanl_profile_names "$path" command)$'\n' == *$'\n'"$word"$'\n'* ]]; then
            path+=${path:+ }$word
        else
            zanl_arguments+=("$word")
            [[ $zanl_package || $word != *zanx ]] || zanl_package=$word
        fi
    done
    if [[ $expected ]]; then
        _zanl_profile_values "$expected" "$current"
    elif [[ -z $no_options && $current == --*=* ]]; then
        _zanl_profile_values "$(_zanl_profile_kind "$path" option "${current%%=*}")" "${current#*=}"
    elif [[ -z $no_options && $current == -* ]]; then
        _zanl_profile_values "words:$(_zanl_profile_names "$path" option)" "$current"
    elif commands=$(_zanl_profile_names "$path" command) && [[ $commands ]]; then
        _zanl_profile_values "words:$commands" "$current"
    else
        kind=$(_zanl_profile_kind "$path" argument $((${#zanl_arguments[@]} + 1)))
        [[ $kind != none ]] || kind=$(_zanl_profile_kind "$path" argument more)
        _zanl_profile_values "$kind" "$current"
    fi
    # Of a word with "=" or ":" the shell replaces what comes after them alone.
    local last=${COMP_WORDS[COMP_CWORD]}
    [[ $last != [=:]* ]] || last=
    COMPREPLY=("${COMPREPLY[@]#"${current%"$last"}"}")
}

complete -F _zanl_profile zanl-profile
