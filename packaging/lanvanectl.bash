# bash completion of lanvanectl: commands, options, adapters and modes. Cameras are not completed: to know them takes a
# search of the network.
_lanvanectl() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands="list show doctor set force restart name rescue plan undo watch report"
    local options="--adapter --ask --json --dry-run --quiet --no-color --timeout --help --version"
    local word command="" deed="" position=0
    local -i i
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        case $word in
            --adapter | --ask | --timeout | --mask | --gateway | --max-failures | --interval | --plan | --metrics) i+=1 ;;
            -*) ;;
            *)
                [ -n "$command" ] && position=$((position + 1))
                [ "$command $position" != "plan 1" ] || deed=$word
                [ -n "$command" ] || command=$word
                ;;
        esac
    done
    case $previous in
        --adapter)
            mapfile -t COMPREPLY < <(compgen -W "$(ls /sys/class/net 2>/dev/null)" -- "$current")
            return
            ;;
        --ask | --timeout | --mask | --gateway | --max-failures | --interval) return ;;
        --plan | --metrics)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
    esac
    case $command in
        set) options+=" --mask --gateway" ;;
        force) options+=" --gateway" ;;
        undo) options+=" --yes --force" ;;
        watch) options+=" --interval --plan --metrics" ;;
        report) options+=" --redact" ;;
        rescue) options+=" --all --static --dhcp --auto --yes" ;;
        plan)
            case $deed in
                export) options+=" --force" ;;
                apply) options+=" --yes --max-failures --no-rollback" ;;
                undo) options+=" --yes --force" ;;
            esac
            ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    elif [ -z "$command" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
    elif [ "$command" = plan ]; then
        if [ -z "$deed" ]; then
            mapfile -t COMPREPLY < <(compgen -W "export check apply undo log" -- "$current")
        elif [ "$position" = 1 ] && [[ $deed == @(export|check|apply) ]]; then
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
        fi
    elif [ "$command" = report ]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    elif [ "$command" = set ] && [ "$position" = 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "static dhcp auto" -- "$current")
    fi
}
complete -F _lanvanectl lanvanectl
