#pragma once

#include <cstddef>
#include <string>

// Where the host application and the suite keep their files. Any thread.
namespace env {

// Units, terminator included, of the buffers in which paths are asked for and expanded.
inline constexpr std::size_t pathBufferSize = 32'780;

// The folder of the host process's executable, not of this library, ending in "\". Found out once
// per process.
std::wstring GetApplicationFolder();

// The full path of the host process's executable. Found out once per process.
std::wstring GetApplicationFilePath();

// The file name of a path, extension included.
std::wstring GetFileName(const std::wstring& path);

// A shell special folder by its CSIDL number, ending in "\"; "\" alone when there is none. The
// folder for the data of all users (35) is found out once per process.
std::wstring GetSpecialFolderPath(int folderId);

// The suite's folder for the data of all users: "C:\ProgramData\\veltrano", with the doubled
// separator, which the system accepts, and none at the end. It need not exist; where the system
// names no folder for the data of all users, it cannot.
std::wstring GetSuiteFolder(const std::wstring& companyFolderWord = L"veltrano");

} // namespace env
