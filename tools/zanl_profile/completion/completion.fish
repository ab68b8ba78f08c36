# SPDX-License-Identifier: Apache-2.0

# __zanl_profile_kind PATH WHAT NAME: the kind of the option's value, or of the argument of this number.
function __zanl_profile_kind
    set -l fallback none
    for row in $__zanl_profile_table
        set -l fields (string split -m 4 '|' -- $row)
        test "$fields[2]|$fields[3]" = "$argv[2]|$argv[3]"; or continue
        if test "$fields[1]" = "$argv[1]"
            echo $fields[4]
            return
        end
        # Options may stand before the command that they are of.
        test "$argv[2]" = option; and set fallback $fields[4]
    end
    echo $fallback
end

# __zanl_profile_names PATH WHAT: the names of the commands or options, with their descriptions.
function __zanl_profile_names
    for row in $__zanl_profile_table
        set -l fields (string split -m 4 '|' -- $row)
        test "$fields[1]|$fields[2]" = "$argv[1]|$argv[2]"; and printf '%s\t%s\n' $fields[3] $fields[5]
    end
end

# __zanl_profile_sections PROGRAM [PACKAGE]: the names of the package's sections.
function __zanl_profile_sections
    test -n "$argv[2]"; or return
    set -l names (string replace -r '^~/' $HOME/ -- $argv)
    $names[1] package list --names $names[2] 2>/dev/null
end

# __zanl_profile_values KIND WORD BEFORE PROGRAM PACKAGE ARGUMENT...: what may stand for the word, after the text before it.
function __zanl_profile_values
    set -l kind (string split ':' -- $argv[1])
    set -l word $argv[2]
    set -l values
    switch $kind[1]
        case words
            set values (string split ',' -- $kind[2])
        case files
            for file in (__fish_complete_path $word | string replace -r '\t.*' '')
                set -l ending (string match -r '[^.]*$' -- $file)
                if test (count $kind) -eq 1; or string match -q '*/' -- $file; or contains -- $ending (string split ',' -- $kind[2])
                    set -a values $file
                end
            end
        case command
            set values (__zanl_profile_names "$argv[6..]" command)
        case section
            set values (__zanl_profile_sections $argv[4] $argv[5])
        case section_file
            if string match -q '*=*' -- $word
                set -l parts (string split -m 1 '=' -- $word)
                __zanl_profile_values files $parts[2] "$argv[3]$parts[1]=" $argv[4..]
                return
            end
            set values (__zanl_profile_sections $argv[4] $argv[5])=
    end
    for value in $values
        echo $argv[3]$value
    end
end

function __zanl_profile_complete
    set -l tokens (commandline -opc)
    set -l current (commandline -ct)
    set -l program $tokens[1]
    set -l path ''
    set -l package ''
    set -l arguments
    set -l expected none
    set -l no_options 0
    for word in $tokens[2..]
        if test "$expected" != none
            set expected none
        else if test $no_options = 0 -a "$word" = --
            set no_options 1
        else if test $no_options = 0; and string match -q -- '-?*' $word
            string match -q -- '*=*' $word; or set expected (__zanl_profile_kind "$path" option $word)
        else if test (count $arguments) -eq 0; and contains -- $word (__zanl_profile_names "$path" command | string replace -r '\t.*' '')
            set path (string trim -- "$path $word")
        else
            set -a arguments $word
            test -z "$package"; and string match -q -- '*zanx' $word; and set package $word
        end
    end
    set -l rest "$program" "$package" $arguments
    if test "$expected" != none
        __zanl_profile_values $expected "$current" '' $rest
    else if test $no_options = 0; and string match -q -- '--*=*' $current
        set -l parts (string split -m 1 '=' -- $current)
        __zanl_profile_values (__zanl_profile_kind "$path" option $parts[1]) "$parts[2]" "$parts[1]=" $rest
    else if test $no_options = 0; and string match -q -- '-*' $current
        __zanl_profile_names "$path" option
    else
        set -l commands (__zanl_profile_names "$path" command)
        if set -q commands[1]
            printf '%s\n' $commands
            return
        end
        set -l kind (__zanl_profile_kind "$path" argument (math (count $arguments) + 1))
        test $kind = none; and set kind (__zanl_profile_kind "$path" argument more)
        __zanl_profile_values $kind "$current" '' $rest
    end
end

complete -c zanl-profile -f -a '(__zanl_profile_complete)'
