# Completion of varnlog and varnlogctl. The commands and options are asked of varnlogctl itself, so that they are never out of date.

_varnlogctl_words() {
  "${1}" "${@:2}" --help 2>/dev/null | awk -v want="$want" '
    want == "commands" && /^Subcommands:/ { in_commands = 1; next }
    in_commands && /^  [a-z]/ { print $1 }
    want == "options" { while (match($0, /--[a-z-]+/)) { print substr($0, RSTART, RLENGTH); $0 = substr($0, RSTART + RLENGTH) } }'
}

_varnlogctl() {
  local cur prev words cword command= i want
  _init_completion || return
  for ((i = 1; i < cword; i++)); do
    case ${words[i]} in
      --folder | --file) ((i++)) ;;
      -*) ;;
      *) command=${words[i]} && break ;;
    esac
  done
  case $prev in
    --folder) _filedir -d && return ;;
    --file | --output) _filedir && return ;;
    --type) COMPREPLY=($(compgen -W 'XI XP XC XS XV' -- "$cur")) && return ;;
    --format) COMPREPLY=($(compgen -W 'table csv json' -- "$cur")) && return ;;
    --from | --to | --patient | --anchor) return ;;
  esac
  if [[ $cur == -* ]]; then
    want=options
    COMPREPLY=($(compgen -W "$(_varnlogctl_words "${words[0]}" $command)" -- "$cur"))
  elif [[ -z $command ]]; then
    want=commands
    COMPREPLY=($(compgen -W "$(_varnlogctl_words "${words[0]}")" -- "$cur"))
  else
    _filedir
  fi
} && complete -F _varnlogctl varnlogctl

_varnlog() {
  local cur prev words cword
  _init_completion || return
  case $prev in
    --folder) _filedir -d && return ;;
    --language) COMPREPLY=($(compgen -W 'D GB E I F NL CYR' -- "$cur")) && return ;;
  esac
  if [[ $cur == -* ]]; then
    COMPREPLY=($(compgen -W '--folder --language --inspect --help --version' -- "$cur"))
  else
    _filedir
  fi
} && complete -F _varnlog varnlog
