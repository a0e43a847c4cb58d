#include "support/temp_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

TempFolder::TempFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "kxutil_XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr)
        std::abort();
    path_ = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string read_file(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}
