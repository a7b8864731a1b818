#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// The files of a folder.
struct Folder
{
    std::string PathOf(const std::string& name) const { return path + '/' + name; }

    std::string Read(const std::string& name) const
    {
        std::ifstream file(PathOf(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(PathOf(name), std::ios::binary) << bytes;
    }

    std::string path;
};

// One of its own, removed at the end.
class CTemporaryFolder : public Folder
{
public:
    CTemporaryFolder() : Folder{std::filesystem::temp_directory_path() / "collector-test-XXXXXX"}
    {
        ::mkdtemp(path.data());
    }
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;
    ~CTemporaryFolder() { std::filesystem::remove_all(path); }
};
