# bash completion of vx: commands, options, their values, names of files.

_vx()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local every='--plugin --max-time --max-memory --max-output --progress --font-dir --font-map --no-system-fonts --missing-fonts
        --script --date-order --salvage --require-sandbox --strict --quiet --verbose --help'
    local picture='--output --format --dpi --zoom --width --height --fit --background --box --page --margin --bleed --marks --layers --hide --profile
        --intent --overprint --samples --text --spots --plates --plate-colours --pdf-x --pdf-a --date --compress'
    local sheet='--dpi --zoom --width --height --fit --box --page --margin --bleed --layers --hide --overprint --samples'
    local words= files=-f

    # "--option=value" comes in three words.
    if [[ $word == '=' ]]; then
        word=
    elif [[ $before == '=' ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi

    case $before in
    -f | --format)
        # Several, with commas between them.
        local list=
        [[ $word == *,* ]] && list=${word%,*},
        words="${list}pdf ${list}svg ${list}png ${list}tiff" files=
        [[ ${COMP_WORDS[1]} != plates ]] || words='png tiff'
        ;;
    --intent) words='relative perceptual' files= ;;
    --overprint) words='simulate ignore' files= ;;
    --samples) words='1 2 4 8' files= ;;
    --text) words='text outlines editable' files= ;;
    --spots) words='keep process' files= ;;
    --plates) words='all none Cyan Magenta Yellow Black' files= ;;
    --plate-colours) words='inks gray' files= ;;
    --layers) words='printing all' files= ;;
    --hide) files= ;;
    --pdf-x) words='x1a x3 x4 none' files= ;;
    --pdf-a) words='2b 2u none' files= ;;
    --compress) words='none fast default small' files= ;;
    --date-order) words='auto mdy dmy' files= ;;
    --script) words='auto roman japanese chinese korean' files= ;;
    --missing-fonts) words='substitute fail' files= ;;
    --progress) words='auto never always' files= ;;
    --retry) words='failed' files= ;;
    --summary) words='text json none' files= ;;
    --only) words='pixels inks facts' files= ;;
    --resume) [[ ${COMP_WORDS[COMP_CWORD - 1]} == '=' || ${COMP_WORDS[COMP_CWORD]} == '=' ]] && words='verify' files= ;;
    --box) words='bbox' files= ;;
    --page) words='drawing a0 a1 a2 a3 a4 a5 a6 b4 b5 letter legal tabloid' files= ;;
    --marks) words='crop none' files= ;;
    --date) words='file now' files= ;;
    -b | --background) words='none transparent white black' files= ;;
    --profile) words='fogra39 none' ;;
    --font-dir | --bag | --report) files=-d ;;
    -r | --dpi | -z | --zoom | --width | --height | --fit | --margin | --bleed | --limit | --tolerance | -j | --jobs | --shard | --port | --max-time | --max-memory | --max-output) files= ;;
    -o | --output | --heat-map | --limits | --html | --plugin | --font-map | --manifest | --files0-from | --journal | --pack) ;;
    *)
        if ((COMP_CWORD == 1)); then
            words='info render plates coverage check text trace fonts batch verify view diff help --event-detail --help --version' files=
        elif [[ ${COMP_WORDS[1]} == help ]]; then
            words='info render plates coverage check text trace fonts batch verify view diff' files=
        elif [[ $word == -* ]]; then
            files=
            case ${COMP_WORDS[1]} in
            info) words="--json $every" ;;
            plates) words="--output --format --no-mkdir --force --marks $sheet $every" ;;
            coverage) words="--limit --heat-map --json --no-mkdir --force $sheet $every" ;;
            check) words="--limits --html --json --no-mkdir --force $sheet $every" ;;
            text) words="--json --layers --hide $every" ;;
            trace) words="--json --structure $every" ;;
            fonts) words="--list --json $every" ;;
            render) words="--force --no-mkdir --merge --premis --jobs $picture $every" ;;
            view) words='--port --no-browser --help' ;;
            verify) words="--json ${picture#--output } $every" ;;
            diff) words="--side-by-side --tolerance --only --json --force ${picture/--format /} $every" ;;
            batch) words="--manifest --null --files0-from --all-files --no-mkdir --unordered --journal --resume --retry --premis --bag --pack --shard --merge-journals --report --summary --allow-outside --jobs $picture $every" ;;
            esac
        fi
        ;;
    esac

    mapfile -t COMPREPLY < <(
        compgen -W "$words" -- "$word"
        [[ -z $files ]] || compgen "$files" -- "$word"
    )
    # Names get what a shell needs around them; outside of a completion there is nothing to say it to.
    [[ -z $files ]] || compopt -o filenames 2>/dev/null || true
} && complete -F _vx vx
