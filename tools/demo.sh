#!/usr/bin/env bash
# Shows what the cross tabulation tool does with the people aboard the Titanic, and writes a whole document as a page.
#
#     tools/demo.sh CROSSTAB REPORT FOLDER
set -euo pipefail

tool=$(realpath "$1")
report=$(realpath "$2")
mkdir -p "$3"
folder=$(realpath "$3")
cd "$(dirname "$0")/../examples/data"

# Prints a command as a user would type it, then what it prints.
show() {
    local line='$ omtree-crosstab' word
    for word; do
        if [[ $word == --* && ${#line} -gt 60 ]]; then
            echo "$line \\"
            line='   '
        fi
        [[ $word =~ ^[A-Za-z0-9_.,:=-]+$ ]] || word="'$word'"
        line+=" $word"
    done
    printf '%s\n\n' "$line"
    "$tool" "$@"
    echo
}

echo "== Nested rows, names in the corner: every cell is a sum of the column Freq =="
show titanic.csv --sum Freq --rows Class,Sex --columns Age,Survived --names-in-corner \
    --title "People aboard the Titanic"

echo "== A group of classes, and ages as layers; among the children the crew's empty rows are left out =="
show titanic.csv --sum Freq --rows Class,Sex --columns Survived --layers Age --names-in-corner \
    --group "Class=Passengers:1st,2nd,3rd" --title "Who survived" \
    --caption "Layers, rows and columns without anybody are not shown." --footnote "2,201 people in all."

echo "== The same layer by layer with everything kept, names beside their categories =="
show titanic.csv --sum Freq --rows Class --columns Sex,Survived --layers Age --keep-empty \
    --group "Class=Passengers:1st,2nd,3rd"

echo "== Pages to open in a browser: a whole document with every kind of item, and the tables above =="
"$report" --html "$folder/report.html"
"$tool" titanic.csv --sum Freq --rows Class,Sex --columns Survived --layers Age --names-in-corner \
    --group "Class=Passengers:1st,2nd,3rd" --title "Who survived" --html "$folder/titanic.html"
echo "$folder/report.html"
echo "$folder/titanic.html"
