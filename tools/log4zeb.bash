# Completion of the command log4zeb for bash.

_log4zeb() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local subcommand=${COMP_WORDS[1]} words=''
  COMPREPLY=()

  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W 'log listen page check --help --version' -- "$word")
    return
  fi
  case $before in
    --level)
      mapfile -t COMPREPLY < <(compgen -W 'DEBUG INFO WARN ERROR FATAL' -- "$word")
      return
      ;;
    # Their values are free.
    --logger | --watch-delay | --records | --syslog | --address | --count | --title) return ;;
  esac
  if [[ $word == -* ]]; then
    case $subcommand in
      log) words='--config --logger --level --level-from-line --watch --watch-delay' ;;
      listen) words='--records --syslog --address --count --json' ;;
      page) words='--title --location-info --output' ;;
      check) words='--directory --json --quiet' ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words --help" -- "$word")
  elif [[ $subcommand != listen ]]; then
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}

complete -F _log4zeb log4zeb
