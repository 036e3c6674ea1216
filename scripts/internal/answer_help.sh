# Sourced by every script: --help prints the script's opening comment and ends it before it does anything.
case "${1:-}" in
  -h | --help)
    sed -n -e '1d' -e '/^#/!q' -e 's/^# \{0,1\}//p' "$0"
    exit 0
    ;;
esac
