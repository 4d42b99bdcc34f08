#include "platform/file_stream.h"

#include <algorithm>

#include "platform/faults.h"
#include "windows_api.h"

namespace torvik::platform {

const char folderSeparator = '\\';
const std::string_view lineEnd = "\r\n";
const bool controlZEndsText = true;

namespace {

std::uint32_t lastError() {
    const DWORD error = GetLastError();
    return error != 0 ? error : ERROR_WRITE_FAULT;
}

HANDLE native(FileHandle handle) {
    return reinterpret_cast<HANDLE>(handle);
}

FileHandle openFile(const char* name, DWORD access, DWORD creation, DWORD flags, std::uint32_t& error) {
    error = injectedFault(FaultPoint::fileOpen);
    if (error != 0) return noFile;
    HANDLE const handle =
        CreateFileA(name, access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, creation, flags, nullptr);
    if (handle == INVALID_HANDLE_VALUE) error = lastError();
    return reinterpret_cast<FileHandle>(handle);
}

bool isFolder(const char* name) {
    const DWORD attributes = GetFileAttributesA(name);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// A volume or a disk is of the same type as its files, but has no information of a file.
bool isRegularFile(FileHandle handle) {
    if (injectedFault(FaultPoint::fileStatus) != 0) return false;
    BY_HANDLE_FILE_INFORMATION information;
    return GetFileType(native(handle)) == FILE_TYPE_DISK &&
           GetFileInformationByHandle(native(handle), &information) != 0;
}

// Waits for a write under way; what `mustEnd` ends is taken back.
std::uint32_t finish(HANDLE file, OVERLAPPED& operation, const StopCheck& mustEnd, DWORD& count) {
    constexpr DWORD milliseconds = 50;
    while (WaitForSingleObject(operation.hEvent, milliseconds) == WAIT_TIMEOUT) {
        if (mustEnd && mustEnd()) CancelIoEx(file, &operation);
    }
    return GetOverlappedResult(file, &operation, &count, TRUE) != 0 ? 0 : lastError();
}

}  // namespace

// A folder does not open.
InputStream::InputStream(const char* name)
    : handle_(openFile(name, GENERIC_READ, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, error_)) {
    if (handle_ != noFile) {
        regular_ = isRegularFile(handle_);
    } else if (isFolder(name)) {
        error_ = 0;
    }
}

InputStream::~InputStream() {
    if (handle_ != noFile) CloseHandle(native(handle_));
}

std::uint32_t InputStream::read(std::span<char> buffer, std::size_t& got) const {
    got = 0;
    if (const std::uint32_t error = injectedFault(FaultPoint::fileRead); error != 0) return error;
    DWORD count = 0;
    if (ReadFile(native(handle_), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) == 0)
        return lastError();
    got = count;
    return 0;
}

OutputStream::OutputStream(const char* name)
    : handle_(openFile(name, GENERIC_WRITE, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OVERLAPPED, error_)) {}

std::uint32_t OutputStream::write(std::string_view bytes, const StopCheck& mustEnd, std::size_t& written) {
    if (const std::uint32_t error = injectedFault(FaultPoint::fileWrite); error != 0) return error;
    OVERLAPPED operation{};
    operation.Offset = static_cast<DWORD>(written_);
    operation.OffsetHigh = static_cast<DWORD>(written_ >> 32U);
    operation.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (operation.hEvent == nullptr) return lastError();
    DWORD count = 0;
    std::uint32_t error = 0;
    if (WriteFile(native(handle_), bytes.data(), static_cast<DWORD>(bytes.size()), &count, &operation) == 0) {
        error = lastError();
        if (error == ERROR_IO_PENDING) error = finish(native(handle_), operation, mustEnd, count);
    }
    CloseHandle(operation.hEvent);
    written = count;
    written_ += count;
    // A port with a write time-out takes nothing, and that is no error.
    if (error == 0 && count == 0 && mustEnd && mustEnd()) error = ERROR_OPERATION_ABORTED;
    return error;
}

std::uint32_t OutputStream::close() {
    if (handle_ == noFile) return 0;
    const bool closed = CloseHandle(native(handle_)) != 0;
    handle_ = noFile;
    if (const std::uint32_t error = injectedFault(FaultPoint::fileClose); error != 0) return error;
    return closed ? 0 : lastError();
}

}  // namespace torvik::platform
