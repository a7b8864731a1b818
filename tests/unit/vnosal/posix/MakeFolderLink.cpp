#include "../TestFolder.h"

namespace vnosal_test {

void MakeFolderLink(const std::filesystem::path& link, const std::filesystem::path& target)
{
    std::filesystem::create_directory_symlink(target, link);
}

bool CanDeleteFolderLinks() { return true; }

} // namespace vnosal_test
