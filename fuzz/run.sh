#!/usr/bin/env bash
# Builds the fuzz targets with clang (build/fuzz) and runs each for SECONDS,
# two at a time. Exits non-zero when any target finds a fault; the input that
# found it is left in build/fuzz/artifacts. Usage: fuzz/run.sh [SECONDS] [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
shift || true

scripts/setup.sh clang libclang-rt-14-dev

build=build/fuzz
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  -DFENNICK_FUZZ=ON -DFENNICK_TESTS=OFF -DFENNICK_BENCH=OFF >/dev/null
cmake --build "$build" -j2 --target fuzz_make_seeds $(cd "$build" && ninja -t targets all | sed -n 's/^\(fuzz_[a-z_]*\): phony$/\1/p' | sort -u)

# Generated seeds, from the checked-in samples and the test data.
rm -rf "$build/seeds"
"$build/fuzz/fuzz_make_seeds" "$build/seeds" tests/data/*.dst tests/data/*.emd tests/data/*.exp tests/data/*.hus \
  tests/data/*.jef tests/data/*.pcs tests/data/*.pec tests/data/*.pes tests/data/*.ph? tests/data/*.sew \
  tests/data/*.shv tests/data/*.vip tests/data/*.xxx fuzz/corpus/read_pes/*.pes

if [ $# -gt 0 ]; then
  targets=("$@")
else
  mapfile -t targets < <(cd "$build/fuzz" && ls fuzz_* | grep -v '^fuzz_make_seeds$' | sed 's/^fuzz_//' | sort)
fi

mkdir -p "$build/artifacts" "$build/logs"
run_one() {
  local target="$1" seconds="$2" build="$3"
  local work="$build/corpus/$target"
  mkdir -p "$work"
  local seeds=()
  for dir in "fuzz/corpus/$target" "$build/seeds/$target"; do
    [ -d "$dir" ] && seeds+=("$dir")
  done
  if "$build/fuzz/fuzz_$target" "$work" "${seeds[@]}" -max_total_time="$seconds" -rss_limit_mb=2048 \
      -malloc_limit_mb=2048 -timeout=10 -max_len=65536 -print_final_stats=1 \
      -artifact_prefix="$build/artifacts/$target-" >"$build/logs/$target.log" 2>&1; then
    echo "ok    $target: $(grep -o 'stat::number_of_executed_units: *[0-9]*' "$build/logs/$target.log" | grep -o '[0-9]*$') runs"
  else
    echo "FAULT $target: see $build/logs/$target.log and $build/artifacts"
    grep -v '^#[0-9]' "$build/logs/$target.log" | tail -n 40 | sed "s/^/  $target| /"
    return 1
  fi
}
export -f run_one

echo "Fuzzing ${#targets[@]} targets for ${seconds} s each, two at a time"
if printf '%s\n' "${targets[@]}" | xargs -P 2 -I{} bash -c 'run_one "$@"' _ {} "$seconds" "$build"; then
  echo "Fuzzing found nothing"
else
  echo "Fuzzing found faults"
  exit 1
fi
