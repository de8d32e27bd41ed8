# Completion of mcec-lab for bash: source this file, or put it where bash-completion looks for it.

# What there is to explain: parameters, commands and the names of result codes. They come from the
# program that is being completed, once in a shell for each program.
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
  [[ $current == = ]] && current=''
  COMPREPLY=()

  # The subcommand, how many of its arguments come before the word to complete, and the option of
  # which that word is a value, with how many are still to come.
  for ((i = 1; i < COMP_CWORD; i++)); do
    if ((values > 0)); then
      [[ ${COMP_WORDS[i]} == = ]] || values=$((values - 1)) # --color=auto is three words
      continue
    fi
    case ${COMP_WORDS[i]} in
      --patch) option=--patch values=2 ;;
      --accept | --color | --format | --html | --intended | --interval | --metrics | --namespace | \
        --pairs | --read-timeout | --timeout | --write-accept)
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
      --patch2) words='left right both actual' ;;
      --format1) words='dump state' ;;
      --color1) words='auto always never' ;;
      --interval1 | --timeout1 | --read-timeout1 | --namespace1) return ;;
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
          words='--json --log --quiet --only-different --fail-on-difference --color --help'
        ;;
      what-if)
        ((place == 0)) && files='*.yaml *.yml'
        [[ $current == -* ]] && words='--json --log --color --help'
        ;;
      compare)
        ((place < 2)) && files='*.json *.yaml *.yml'
        [[ $current == -* ]] &&
          words='--json --all --quiet --patch --html --intended --accept --write-accept --strict
            --pairs --notes --format --namespace --read-timeout --color --help'
        ;;
      capture)
        ((place == 0)) && files='*.json *.yaml *.yml'
        [[ $current == -* ]] && words='--format --namespace --read-timeout --color --help'
        ;;
      watch)
        ((place < 2)) && files='*.json *.yaml *.yml'
        [[ $current == -* ]] &&
          words='--json --interval --once-agreed --timeout --read-timeout --metrics --accept --strict
            --namespace --color --help'
        ;;
      explain)
        if [[ $current == -* ]]; then
          words='--color --help'
        elif ((place == 0)); then
          _mcec_lab_learn "$lab"
          words=$_mcec_lab_names
        fi
        ;;
      list)
        if [[ $current == -* ]]; then
          words='--json --color --help'
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
