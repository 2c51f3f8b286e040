# Completion of quorvex and vantaro in bash. Needs the package bash-completion, which also loads this file: it is
# installed under the names of both.

# What the program itself says, about the settings that the line names. Complaints are not for the middle of a line.
_quorvex_ask() {
    local program=${words[0]/#\~\//$HOME/} settings=() i
    for ((i = 1; i < cword; i++)); do
        case ${words[i]} in
            --config-dir=*) settings=("${words[i]/=\~\//=$HOME/}") ;;
            --config-dir) settings=(--config-dir "${words[i + 1]/#\~\//$HOME/}") ;;
        esac
    done
    "$program" "${settings[@]}" "$@" 2>/dev/null </dev/null
}

# Adds the lines of standard input that begin with what is typed. They may hold blanks; readline quotes them as it
# does names of files.
_quorvex_offer_lines() {
    local typed=${cur#[\"\']} line
    typed=${typed//\\/}
    while IFS= read -r line; do
        [[ $line == "$typed"* ]] && COMPREPLY+=("$line")
    done
    compopt -o filenames 2>/dev/null
}

# Music files, playlists and folders.
_quorvex_tracks() {
    _filedir '@(mp3|mp2|mpga|flac|fla|ogg|oga|opus|spx|m4[abpr]|mp4|wv|ape|mac|mpc|mp+|mpp|tta|wav|aif?(f|c)|rf64|bw64|dsf|dff|caf|wma|asf|mka|mkv|webm|aac|ac3|eac3|ec3|tak|of[rs]|shn|m3u?(8)|pls|cue)'
}

# The values of the options that both programs have. Returns whether the cursor is at one.
_quorvex_common_value() {
    case $prev in
        --config-dir | --components) _filedir -d ;;
        --id3v2) COMPREPLY=($(compgen -W 'as-needed keep 2.3 2.4' -- "$cur")) ;;
        --jobs) COMPREPLY=($(compgen -W '{1..64}' -- "$cur")) ;;
        --code-page)
            COMPREPLY=($(compgen -W 'windows-125{0..8} iso-8859-{{1..9},13,15} ibm-{437,850,852,866}
                koi8-r koi8-u macintosh shift_jis euc-jp euc-kr gb18030 big5' -- "$cur"))
            ;;
        *) return 1 ;;
    esac
}

_quorvex() {
    local cur prev words cword split
    _init_completion -s -n : || return
    _quorvex_common_value && return
    case $prev in
        --name)
            _quorvex_offer_lines < <(_quorvex_ask scripts list)
            return
            ;;
        --files-from)
            _filedir
            return
            ;;
    esac
    $split && return

    # The verb, and how many words after it are no options.
    local verb='' count=0 i
    for ((i = 1; i < cword; i++)); do
        case ${words[i]} in
            --config-dir | --components | --jobs | --code-page | --id3v2 | --name | --files-from) ((i++)) ;;
            -*) ;;
            *)
                if [[ -z $verb || $verb == scripts ]]; then
                    verb+="${verb:+ }${words[i]}"
                else
                    ((count++))
                fi
                ;;
        esac
    done

    if [[ $cur == -* ]]; then
        local options='--help --config-dir --components --jobs --code-page'
        case $verb in
            '') options+=' --version' ;;
            run) options+=' --dry-run --changed --id3v2 --yes --json --files-from --null' ;;
            preview) options+=' --changed --id3v2 --yes --json --files-from --null' ;;
            tags) options+=' --json --files-from --null' ;;
            format) options+=' --files-from --null' ;;
            runs | kinds) options+=' --json' ;;
            undo) options+=' --times --json' ;;
            'scripts import') options+=' --name --replace' ;;
        esac
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi

    case "$verb:$count" in
        :0) COMPREPLY=($(compgen -W 'run preview tags format runs undo kinds scripts' -- "$cur")) ;;
        scripts:0) COMPREPLY=($(compgen -W 'list show import export delete' -- "$cur")) ;;
        run:0 | preview:0)
            _filedir '@(qvx|json)'
            _quorvex_offer_lines < <(_quorvex_ask scripts list)
            ;;
        run:* | preview:* | tags:* | format:[1-9]*) _quorvex_tracks ;;
        undo:0 | runs:0)
            _quorvex_offer_lines < <(_quorvex_ask runs | cut -d ' ' -f 1)
            compopt -o nosort 2>/dev/null # the newest first
            ;;
        'scripts show:0' | 'scripts export:0' | 'scripts delete:0')
            _quorvex_offer_lines < <(_quorvex_ask scripts list)
            ;;
        'scripts import:0' | 'scripts export:1') _filedir '@(qvx|json)' ;;
    esac
} &&
    complete -F _quorvex quorvex

_vantaro() {
    local cur prev words cword split
    _init_completion -s -n : || return
    _quorvex_common_value && return
    if [[ $prev == --menu ]]; then
        # The paths of the commands, without their GUIDs.
        _quorvex_offer_lines < <(_quorvex_ask --list-menu | sed 's/  {[^}]*}$//')
        return
    fi
    $split && return
    case $cur in
        -*)
            COMPREPLY=($(compgen -W '--help --version --config-dir --components --jobs --code-page --id3v2 --menu
                --list-menu --yes' -- "$cur"))
            ;;
        /tag:*)
            COMPREPLY=($(compgen -W '/tag:help /tag:AUTOTRACKNUMBER /tag:FORMAT: /tag:GUESS:' -- "$cur"))
            [[ ${COMPREPLY-} == *: ]] && compopt -o nospace 2>/dev/null
            __ltrim_colon_completions "$cur"
            ;;
        *) _quorvex_tracks ;;
    esac
} &&
    complete -F _vantaro vantaro
