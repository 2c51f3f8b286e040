# For an interactive zsh: Ctrl+T then writes to $OFFERS what is offered at the end of $LINE in the folder
# $PLACE, one a line, and "done".
fpath=($FUNCTIONS $fpath)
PROMPT=
cd $PLACE
autoload -Uz compinit
compinit -u -C -d $DUMP

compadd() {
    local -i separator=${@[(i)-(|-)]} asked=${@[(I)-[OAD]*]}
    # Called so, it offers nothing yet.
    if ((asked && asked < separator)); then
        builtin compadd "$@"
        return
    fi
    local -a offers
    builtin compadd -A offers "$@"
    print -rl -- $offers >>$OFFERS
    builtin compadd "$@"
}

offer() {
    BUFFER=$LINE
    CURSOR=$#BUFFER
    zle complete-word
    print done >>$OFFERS
    exit 0
}
zle -N offer
bindkey '^T' offer
