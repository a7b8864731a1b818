#include "vnosal/FileSystem.h"

#include "vnosal/posix/NativeName.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// The user's trash folder after the freedesktop.org Trash standard 1.0: items under "files",
// where they came from under "info".
namespace VnOSAL {
namespace {

std::string FindTrash()
{
    const char* const data = std::getenv("XDG_DATA_HOME");
    const char* const home = std::getenv("HOME");
    if (data && *data == '/')
        return std::string(data) + "/Trash";
    return home ? std::string(home) + "/.local/share/Trash" : std::string();
}

bool MakeFolders(const std::string& path)
{
    for (std::size_t end = path.find('/', 1); end != std::string::npos;
         end = path.find('/', end + 1))
        mkdir(path.substr(0, end).c_str(), 0700);
    return mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}

std::string MakeInfo(const VnString& absolutePath)
{
    char date[32] = "";
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (localtime_r(&now, &local))
        std::strftime(date, sizeof(date), "%Y-%m-%dT%H:%M:%S", &local);
    const VnString address = VnPath::FromFilePath(VnPath(absolutePath)).GetText();
    const VnString path = address.GetMid(std::wstring_view(L"file://").size());
    return "[Trash Info]\nPath=" + ToNativeName(path) + "\nDeletionDate=" + date + "\n";
}

SystemError WriteInfo(const std::string& file, const std::string& info)
{
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (opened == -1)
        return ErrorOf(-1);
    const bool written =
        write(opened, info.data(), info.size()) == static_cast<ssize_t>(info.size());
    const SystemError error = written ? 0 : ErrorOf(-1);
    close(opened);
    return error;
}

std::string MakeAbsolute(const std::string& path)
{
    if (path[0] == '/')
        return path;
    char* const current = getcwd(nullptr, 0);
    std::string absolute = current ? current : "";
    std::free(current);
    return absolute.append("/").append(path);
}

} // namespace

// Only from the trash's own volume: a trash for each other volume is not every system's custom.
SystemError RecycleItem(const VnString& path) noexcept
{
    std::string native;
    const std::string trash = FindTrash();
    if (!ToNativePath(path, native))
        return NumberOf(EError::BadPath);
    native.erase(native.find_last_not_of('/') + 1); // of "/" nothing is left
    struct stat status;
    if (lstat(native.c_str(), &status) != 0)
        return ErrorOf(-1);
    if (trash.empty() || !MakeFolders(trash + "/files") || !MakeFolders(trash + "/info"))
        return NumberOf(EError::NotSupported);

    const std::string name = native.substr(native.find_last_of('/') + 1);
    const std::string info = MakeInfo(FromNativeName(MakeAbsolute(native)));
    for (int attempt = 0;; ++attempt)
    {
        std::string unique = name;
        if (attempt != 0)
            unique.append(".").append(std::to_string(attempt));
        const std::string infoFile =
            std::string(trash).append("/info/").append(unique) + ".trashinfo";
        const SystemError error = WriteInfo(infoFile, info);
        if (error == EEXIST)
            continue;
        if (error != 0)
            return error;
        if (std::rename(native.c_str(),
                        std::string(trash).append("/files/").append(unique).c_str()) == 0)
            return 0;
        const SystemError moved = ErrorOf(-1);
        unlink(infoFile.c_str());
        return moved == EXDEV ? NumberOf(EError::NotSupported) : moved;
    }
}

} // namespace VnOSAL
