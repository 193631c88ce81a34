#!/bin/sh
# Builds the libFuzzer target of the project file reader with clang under
# AddressSanitizer and UndefinedBehaviorSanitizer (Debian: clang and
# libclang-rt-14-dev). Usage: fuzz/build.sh [build folder]
#
# Then, for example (the seed corpus is copied, the fuzzer adds to the copy):
#   mkdir -p work-corpus && cp tests/data/prj-corpus/* work-corpus/
#   BUILD/fuzz_projectfile -dict=fuzz/prj.dict -max_len=16384 \
#       -max_total_time=600 -rss_limit_mb=2048 -timeout=10 work-corpus
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-build-fuzz}
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$build"
echo "built $build/fuzz_projectfile"
