// A folder of a test's own, removed with its contents.
#ifndef TESTS_SUPPORT_TEMP_FOLDER_H
#define TESTS_SUPPORT_TEMP_FOLDER_H

#include <string>

class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // The name of a file inside, which need not exist.
    std::string file(const std::string& name) const {
        return path_ + "/" + name;
    }

  private:
    std::string path_;
};

// The whole contents of a file; empty when it cannot be read.
std::string read_file(const std::string& path);

#endif
