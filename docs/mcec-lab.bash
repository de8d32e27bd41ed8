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
  local command='' i place=0 option='' values=0 words='' files='' ending reply
  [[ $lab == \~/* ]] && lab=$HOME/${lab:2}
  COMPREPLY=()

  # The subcommand, how many of its arguments stand before the word to complete, and the option of
  # which that word is a value, with how many are still to come.
  for ((i = 1; i < COMP_CWORD; i++)); do
    if ((values > 0)); then
      values=$((values - 1))
      continue
    fi
    case ${COMP_WORDS[i]} in
      --patch) option=--patch values=2 ;;
      --format | --html | --pairs | --interval | --timeout | --read-timeout | --metrics)
        option=${COMP_WORDS[i]} values=1
        ;;
      -?*) ;;
      *)
        if [[ -z $command ]]; then
          command=${COMP_WORDS[i]}
        else
          place=$((place + 1))
        fi
        ;;
    esac
  done

  if ((values > 0)); then
    case $option$values in
      --cure2) words='left right both' ;;
      --format1) words='dump state' ;;
      --interval1 | --timeout1 | --read-timeout1) return ;;
      *) files='*' ;;
    esac
  else
    case $command in
      '')
        words='run what-if compare capture watch explain list'
        [[ $current == -* ]] && words='--help --version'
        ;;
      run)
        files='*.yaml *.yml'
        [[ $current == -* ]] &&
          words='--json --log --quiet --only-different --fail-on-difference --no-color --help'
        ;;
      what-if)
        ((place == 0)) && files='*.yaml *.yml'
        [[ $current == -* ]] && words='--json --log --no-color --help'
        ;;
      compare)
        ((place < 2)) && files='*.json *.yaml *.yml'
        [[ $current == -* ]] &&
          words='--json --all --patch --html --pairs --format --read-timeout --no-color --help'
        ;;
      capture)
        ((place == 0)) && files='*.json *.yaml *.yml'
        [[ $current == -* ]] && words='--format --read-timeout --no-color --help'
        ;;
      watch)
        ((place < 2)) && files='*.json *.yaml *.yml'
        [[ $current == -* ]] &&
          words='--json --interval --once-agreed --timeout --read-timeout --metrics --no-color --help'
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
  fi

  if [[ -n $words ]]; then
    while IFS= read -r reply; do
      COMPREPLY+=("$reply")
    done < <(compgen -W "$words" -- "$current")
  elif [[ -n $files && $current != -* ]]; then
    # Directories, and the files that fit.
    local -a endings
    read -r -a endings <<<"$files"
    while IFS= read -r reply; do
      COMPREPLY+=("$reply")
    done < <({
      compgen -d -- "$current"
      for ending in "${endings[@]}"; do compgen -f -X "!$ending" -- "$current"; done
    } | sort -u)
    # Outside of a completion there is no completion to give options to.
    compopt -o filenames 2>/dev/null || :
  fi
}

complete -F _mcec_lab mcec-lab
