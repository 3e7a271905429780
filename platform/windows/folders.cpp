// Defines the folder's id in this file; the import libraries hold it in one that nothing else needs.
#include <initguid.h>

#include "platform/folders.h"

#include <knownfolders.h>
#include <shlobj.h>
#include <windows.h>

namespace pyrux::platform {

std::filesystem::path commonDataFolder()
{
    PWSTR found = nullptr;
    const HRESULT result = SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &found);
    const std::filesystem::path folder = SUCCEEDED(result) ? found : L"C:\\ProgramData";
    CoTaskMemFree(found);
    return folder;
}

} // namespace pyrux::platform
