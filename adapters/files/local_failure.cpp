#include "files/local_failure.h"

#include "platform/failure.h"

#include <string>

namespace quillport {

namespace {

std::string textOf(std::int32_t number) {
    switch (number) {
    case failure_number::invalidCall:
        return "Invalid procedure call or argument";
    case failure_number::fileNotFound:
        return "File not found";
    case failure_number::deviceError:
        return "Device I/O error";
    case failure_number::fileAlreadyExists:
        return "File already exists";
    case failure_number::diskFull:
        return "Disk full";
    case failure_number::permissionDenied:
        return "Permission denied";
    case failure_number::pathNotFound:
        return "Path not found";
    default:
        return "Path/File access error";
    }
}

std::int32_t numberOf(std::error_code error, std::int32_t missing) {
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
        return missing;
    }
    if (error == std::errc::filename_too_long || error == std::errc::too_many_symbolic_link_levels) {
        return failure_number::pathNotFound;
    }
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
        error == std::errc::device_or_resource_busy || error == std::errc::text_file_busy) {
        return failure_number::permissionDenied;
    }
    if (error == std::errc::file_exists) {
        return failure_number::fileAlreadyExists;
    }
    if (error == std::errc::no_space_on_device) {
        return failure_number::diskFull;
    }
    if (error == std::errc::io_error) {
        return failure_number::deviceError;
    }
    return failure_number::pathFileAccess;
}

} // namespace

void raiseLocal(std::int32_t number, std::string_view path, std::error_code why) {
    std::string description = textOf(number) + ": " + std::string(path);
    if (why) {
        description += " (" + why.message() + ")";
    }
    throw Failure(number, description);
}

void raiseTranslated(std::error_code error, std::string_view path, std::int32_t missing) {
    raiseLocal(numberOf(error, missing), path, error);
}

} // namespace quillport
