// The fuzz targets' sandbox root: a fresh folder below $TMPDIR (default /tmp),
// removed when the run ends by exit (libFuzzer's -max_total_time and -runs).
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

inline const std::string& fuzzSandbox() {
    static struct Root {
        std::string path = std::string(getenv("TMPDIR") ? getenv("TMPDIR") : "/tmp") + "/wlansync-fuzz-XXXXXX";
        Root() { if (!mkdtemp(path.data())) std::abort(); }
        ~Root() { std::error_code ignored; std::filesystem::remove_all(path, ignored); }
    } root;
    return root.path;
}
