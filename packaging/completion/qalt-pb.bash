# bash completion for qalt-pb
_qalt_pb() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} word i command=
  local global='--platform --wait --server-user --json --no-progress --verbose --help --version'
  local commands='info list get find add set delete clear export import at reports text'
  local fields='--name --number --number2 --number3 --email --extra'

  # bash takes --format=csv for three words.
  if [[ $cur == = ]]; then
    cur=
  elif [[ $prev == = ]]; then
    prev=${COMP_WORDS[COMP_CWORD-2]}
  fi

  # The command is the first word that is neither an option nor an option's value.
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    case $word in
      --platform | --wait | --server-user)
        [[ ${COMP_WORDS[i+1]} == = ]] && ((++i))
        ((++i)) ;;
      -*) ;;
      *) command=$word; break ;;
    esac
  done

  case $prev in
    --format) COMPREPLY=($(compgen -W 'jsonl vcf csv' -- "$cur")); return ;;
    --module) compopt -o default; return ;;
    --server-user) COMPREPLY=($(compgen -u -- "$cur")); return ;;
    --platform | --wait | --from | --to | --index | --timeout | --count) return ;;
    --name | --number | --number2 | --number3 | --email | --extra) return ;;
  esac

  local words=$global
  case $command in
    '') words+=" $commands" ;;
    list) words+=' --from --to' ;;
    add) words+=" $fields --index --force" ;;
    set) words+=" $fields" ;;
    delete | clear) words+=' --yes' ;;
    export) words+=' --format' ;;
    import) words+=' --format --dry-run --replace --yes --force' ;;
    at) words+=' --timeout' ;;
    reports) words+=' --module --count' ;;
    text) words+=' encode decode --vendor --compact' ;;
  esac
  case $command in
    export | import)
      if [[ $cur != -* ]]; then
        compopt -o default  # the shell's own completion, which knows how to quote a name
        return
      fi ;;
  esac
  # Options are offered once a dash is typed; otherwise the words of the command.
  [[ $cur == -* ]] || words=$(printf '%s\n' $words | grep -v '^-')
  COMPREPLY=($(compgen -W "$words" -- "$cur"))
}
complete -F _qalt_pb qalt-pb
