#!/usr/bin/env bash
# Shows what the cross tabulation tool does with the passengers of the Titanic.
#
#     tools/demo.sh TOOL
set -euo pipefail

tool=$1
data=$(dirname "$0")/../examples/data/titanic.csv

"$tool" --title "Titanic" --rows Class,Sex --columns Age,Survived "$data"
