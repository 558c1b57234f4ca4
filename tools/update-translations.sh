#!/usr/bin/env bash
# Refreshes the translation sources in translations/ after texts in the code
# changed: lupdate collects every tr() and QT_TRANSLATE_NOOP text of the
# plug-in (dev/, its UPS model and views with their designer forms, main/)
# into orvek_<lang>.ts and the host's (host/) into orvek-host_<lang>.ts.
# Translations of unchanged texts are kept; texts no longer in the code are
# dropped. New texts come out unfinished until someone translates them
# (linguist translations/orvek_zh_CN.ts). Languages: the existing .ts files,
# or the ones given as arguments (e.g. zh_CN de). TS_DIR writes the files
# into another folder (the tests compare a fresh extraction with ours).
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
LUPDATE="${LUPDATE:-lupdate}"
TS_DIR="$(mkdir -p "${TS_DIR:-$ROOT/translations}" && cd "${TS_DIR:-$ROOT/translations}" && pwd)"
cd "$ROOT"

langs=("$@")
if ((${#langs[@]} == 0)); then
    for ts in "$TS_DIR"/orvek_*.ts; do
        [[ -e "$ts" ]] || continue
        lang="${ts#"$TS_DIR"/orvek_}"
        langs+=("${lang%.ts}")
    done
fi
if ((${#langs[@]} == 0)); then
    echo "update-translations: no orvek_<lang>.ts in $TS_DIR yet; name the languages" >&2
    exit 1
fi

for lang in "${langs[@]}"; do
    "$LUPDATE" -no-obsolete -locations none -source-language en -target-language "$lang" \
        dev main -ts "$TS_DIR/orvek_${lang}.ts"
    "$LUPDATE" -no-obsolete -locations none -source-language en -target-language "$lang" \
        host -ts "$TS_DIR/orvek-host_${lang}.ts"
done
