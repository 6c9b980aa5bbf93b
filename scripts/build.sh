#!/bin/sh
# Configures and builds into a folder. Usage: sh scripts/build.sh FOLDER [CMAKE_OPTION...]
set -eu
cd "$(dirname "$0")/.."

folder=$1
shift
cmake -S . -B "$folder" -G Ninja "$@"
cmake --build "$folder"
