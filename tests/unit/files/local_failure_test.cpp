#include "files/local_failure.h"

#include "platform/failure.h"

#include <gtest/gtest.h>

#include <string>

namespace quillport {

TEST(LocalFailure, TranslatesEachKindOfErrorOnce) {
    struct Row {
        std::errc error;
        std::int32_t number;
        std::string text;
    };
    const Row rows[] = {
        {std::errc::no_such_file_or_directory, 53, "File not found"},
        {std::errc::not_a_directory, 53, "File not found"},
        {std::errc::filename_too_long, 76, "Path not found"},
        {std::errc::too_many_symbolic_link_levels, 76, "Path not found"},
        {std::errc::permission_denied, 70, "Permission denied"},
        {std::errc::operation_not_permitted, 70, "Permission denied"},
        {std::errc::device_or_resource_busy, 70, "Permission denied"},
        {std::errc::text_file_busy, 70, "Permission denied"},
        {std::errc::file_exists, 58, "File already exists"},
        {std::errc::no_space_on_device, 61, "Disk full"},
        {std::errc::io_error, 57, "Device I/O error"},
        {std::errc::read_only_file_system, 75, "Path/File access error"},
        {std::errc::directory_not_empty, 75, "Path/File access error"},
    };
    for (const Row& row : rows) {
        const std::error_code error = make_error_code(row.error);
        try {
            raiseTranslated(error, "\\a\\b", failure_number::fileNotFound);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.number(), row.number) << error.message();
            EXPECT_EQ(failure.description(), row.text + ": \\a\\b (" + error.message() + ")");
        }
    }
}

TEST(LocalFailure, WhatIsMissingHasTheNumberThatTheCallerKnows) {
    try {
        raiseTranslated(make_error_code(std::errc::no_such_file_or_directory), "\\a",
                        failure_number::pathNotFound);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.number(), failure_number::pathNotFound);
    }
}

} // namespace quillport
