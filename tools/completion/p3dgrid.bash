# Completes the command line of p3dgrid in bash. Commands, options and their values are taken from
# p3dgrid --help, so that they are always those of the version installed.

# The first words of the lines of a help text that match a pattern.
_p3dgrid_words() {
  local text=$1 pattern=$2
  sed -nE "s/^ +(-h,)?($pattern)( .*)?\$/\2/p" <<<"$text"
}

# The values that an option takes, if the help names them: "--to-format unformatted|formatted".
_p3dgrid_values() {
  local help=$1 option=$2 values
  case $option in
    --variable) echo "rho density x-momentum y-momentum z-momentum energy u v w p pressure mach"; return ;;
    --plane) echo i= j= k=; return ;;
  esac
  values=$(sed -nE "s/^ +$option ([^ ]*[|][^ ]*).*/\1/p" <<<"$help")
  tr '|' '\n' <<<"$values" | grep -x '[a-z0-9]*'
}

_p3dgrid() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local program=${COMP_WORDS[0]/#\~/$HOME} command="" word help
  COMPREPLY=()
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ $word != -* ]]; then
      command=$word
      break
    fi
  done
  help=$("$program" ${command:+"$command"} --help 2>/dev/null) || return
  if [[ $command == "" && $current != -* ]]; then
    local commands
    commands=$(sed '1,/^Subcommands:/d' <<<"$help")
    mapfile -t COMPREPLY < <(compgen -W "$(_p3dgrid_words "$commands" '[a-z]+')" -- "$current")
  elif [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(_p3dgrid_words "$help" '--[a-z-]+')" -- "$current")
  elif [[ $previous == -* ]] && grep -qE "^ +$previous [A-Za-z0-9]" <<<"$help"; then # takes a value
    mapfile -t COMPREPLY < <(compgen -W "$(_p3dgrid_values "$help" "$previous")" -- "$current")
    [[ $previous == --plane ]] && compopt -o nospace 2>/dev/null
    [[ $previous == --grid || $previous == --restart ]] && compopt -o default 2>/dev/null
  else
    compopt -o default 2>/dev/null # files
  fi
}

complete -F _p3dgrid p3dgrid
