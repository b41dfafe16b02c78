# Sourced by the scripts: building a preset quietly.

# build PRESET [TARGET...]: configures and builds; on a failure shows what the tools said.
build() {
    local preset=$1 log=build/$1.log
    shift
    mkdir -p build
    echo "Building ($preset) …" >&2
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}; } >"$log" 2>&1; then
        grep -E -A12 'error|FAILED|CMake Error' "$log" | head -n 80 >&2
        echo "The whole log: $log" >&2
        return 1
    fi
}
