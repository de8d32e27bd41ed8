# Completion of mcec-lab for bash: source this file, or put it where bash-completion looks for it.

# What there is to explain: parameters, commands and the names of result codes. They are taken from
# the lab that is being completed, once in a shell for each lab.
_mcec_lab_learn() {
  [[ ${_mcec_lab_known:-} == "$1" ]] && return
  _mcec_lab_names=$("$1" list --json 2>/dev/null |
    sed -n -E 's/^ *"(parameter|command|name)": "([^"]+)",?$/\2/p' | sort -u)
  [[ -n $_mcec_lab_names ]] && _mcec_lab_known=$1
}

_mcec_lab() {
  local lab=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]}
  local command='' i place=0 words='' files=no
  [[ $lab == \~/* ]] && lab=$HOME/${lab:2}
  COMPREPLY=()

  # The subcommand, and how many of its arguments stand before the word to complete.
  for ((i = 1; i < COMP_CWORD; i++)); do
    case ${COMP_WORDS[i]} in
      -*) ;;
      *)
        if [[ -z $command ]]; then
          command=${COMP_WORDS[i]}
        else
          place=$((place + 1))
        fi
        ;;
    esac
  done

  case $command in
    '')
      words='run what-if explain list'
      [[ $current == -* ]] && words='--help --version'
      ;;
    run)
      files=yes
      [[ $current == -* ]] && words='--json --log --quiet --no-color --help'
      ;;
    what-if)
      ((place == 0)) && files=yes
      [[ $current == -* ]] && words='--json --log --no-color --help'
      ;;
    explain)
      if [[ $current == -* ]]; then
        words='--no-color --help'
      elif ((place == 0)); then
        _mcec_lab_learn "$lab"
        words=$_mcec_lab_names
      fi
      ;;
    list)
      if [[ $current == -* ]]; then
        words='--json --no-color --help'
      elif ((place == 0)); then
        words='parameters commands'
      fi
      ;;
  esac

  local reply
  if [[ -n $words ]]; then
    while IFS= read -r reply; do
      COMPREPLY+=("$reply")
    done < <(compgen -W "$words" -- "$current")
  elif [[ $files == yes && $current != -* ]]; then
    # Directories, and files that can be scenarios.
    while IFS= read -r reply; do
      COMPREPLY+=("$reply")
    done < <(
      compgen -d -- "$current"
      compgen -f -X '!*.yaml' -- "$current"
      compgen -f -X '!*.yml' -- "$current"
    )
    # Outside of a completion there is no completion to give options to.
    compopt -o filenames 2>/dev/null || :
  fi
}

complete -F _mcec_lab mcec-lab
