// A folder of a test's own, removed with its contents.
#ifndef TESTS_SUPPORT_TEMP_FOLDER_H
#define TESTS_SUPPORT_TEMP_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

class TempFolder {
    const std::string path_ =
        mkdtemp((std::filesystem::temp_directory_path() / "kxutil_XXXXXX").string().data());

  public:
    TempFolder& operator=(TempFolder&&) = delete;  // which rules out copies, too
    ~TempFolder() {
        std::filesystem::remove_all(path_);
    }
    // The name of a file inside, which need not exist.
    std::string file(const std::string& name) const {
        return path_ + "/" + name;
    }
};

// The whole contents of a file; empty when it cannot be read.
inline std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

#endif
