#!/usr/bin/env bash
# What scripts/setup asks of apt, with a stand-in for the package manager that tells and decides. Usage: setup_test.sh SETUP
set -u
setup=$1
here=$(mktemp -d)
trap 'rm -rf "$here"' EXIT
mkdir "$here/bin"
export ASKED=$here/asked PATH=$here/bin:$PATH
cat >"$here/bin/apt-get" <<'APT'
#!/usr/bin/env bash
what= way=ordinary
for word in "$@"; do
    case $word in
    update | install) what=$word ;;
    Dir::Etc::sourcelist=*) way=two-suites; [ -e "${word#*=}" ] || exit 9 ;;
    wine) what+=-wine ;;
    libsdl2-dev) what+=-native ;;
    esac
done
echo "$what $way" >>"$ASKED"
case " $FAILING " in
*" $what/$way "*)
    printf 'Some packages could not be installed.\n wine32 : Depends: libwine:i386 (= 8) but it is not going to be installed\nE: held broken packages.\n' >&2
    exit 100
    ;;
esac
APT
cat >"$here/bin/dpkg-query" <<'QUERY'
#!/usr/bin/env bash
case " $PRESENT " in *" all "*|*" ${!#} "*) echo install ok installed ;; esac
QUERY
printf '#!/bin/sh\necho "$@" | grep -q print || echo "dpkg $*" >>"$ASKED"\n' >"$here/bin/dpkg"
printf '#!/bin/sh\necho 0\n' >"$here/bin/id"
chmod +x "$here"/bin/*

failures=0
# expect STATUS "ASKED; ..." "what it says, or nothing" setup's arguments
expect() {
    local status=$1 asked=$2 says=$3 got said
    shift 3
    : >"$ASKED"
    said=$("$setup" "$@" 2>&1)
    got=$?
    [ "$got" = "$status" ] && [ "$(paste -sd';' "$ASKED")" = "$asked" ] && [[ $said == *"$says"* ]] && return
    echo "setup $* (present: $PRESENT, failing: $FAILING): status $got, asked $(paste -sd';' "$ASKED"), said: $said"
    failures=1
}
wine='dpkg --add-architecture i386;update ordinary;install-wine ordinary'
way='wine32 : Depends: libwine:i386'
export PRESENT FAILING
PRESENT=all FAILING=''
expect 0 '' '' --tests
PRESENT='' FAILING=''
expect 0 'update ordinary;install-native ordinary' ''
expect 0 "$wine;install-native ordinary" '' --tests
FAILING='install-wine/ordinary'
expect 0 "$wine;update two-suites;install-wine two-suites;install-native ordinary" '' --tests
FAILING='update/ordinary install-native/ordinary'
expect 0 "$wine;install-native ordinary;update two-suites;install-native two-suites" 'not every package list' --tests
FAILING='install-wine/ordinary install-wine/two-suites'
expect 0 "$wine;update two-suites;install-wine two-suites;install-native ordinary" "$way" --tests
FAILING='install-native/ordinary install-native/two-suites'
expect 1 'update ordinary;install-native ordinary;update two-suites;install-native two-suites' "$way"
exit $failures
