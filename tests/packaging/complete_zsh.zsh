# Runs the zsh completion of timeline-convert as an interactive zsh would and
# prints what it offers after each query, one block per query ended by "@@".
# Usage: zsh -f complete_zsh.zsh COMPLETION_FILE WORK_DIR QUERY...
# where a QUERY is what follows "timeline-convert " on the command line.
zmodload zsh/zpty
completion=$1 work=$2
shift 2
mkdir -p $work/functions
cp $completion $work/functions/_timeline-convert
hits=$work/hits
: >| $hits
zpty z 'TERM=dumb zsh -f -i'
# Every candidate handed to compadd is written to the file as well.
zpty -w z "PS1=''; fpath=($work/functions \$fpath); autoload -U compinit; compinit -u -D"
zpty -w z "compadd() { local -a found; builtin compadd -O found \"\$@\"; print -rl -- \$found >> $hits; builtin compadd \"\$@\" }"

# Runs one command line in the shell and waits until it has run.
run() {
  local before=$(grep -c '^@@' $hits)
  zpty -w z "print -r -- @@ >> $hits"
  repeat 250; do
    (( $(grep -c '^@@' $hits) > before )) && return 0
    sleep 0.02
  done
  return 1
}
run || exit 1
# zle discards what is typed before its prompt is up, so a query that offers
# nothing is typed again.
for query in "$@"; do
  repeat 5; do
    local lines=$(wc -l < $hits)
    sleep 0.05
    zpty -w -n z "timeline-convert $query"$'\t'
    sleep 0.05
    zpty -w -n z $'\C-u'
    run || exit 1
    (( $(wc -l < $hits) > lines + 1 )) && break
    sed -i '$d' $hits
  done
  tail -n +$(( lines + 1 )) $hits
done
zpty -d z
