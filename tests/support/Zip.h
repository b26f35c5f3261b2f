#pragma once

#include <gtest/gtest.h>
#include <zip.h>

#include <string>
#include <utility>
#include <vector>

/// A zip archive with these files, as name and content, in memory.
inline std::string Zip(const std::vector<std::pair<std::string, std::string>> &files) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *const target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_source_keep(target);
    zip_t *const archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    for (const auto &[name, text] : files)
        zip_file_add(archive, name.c_str(), zip_source_buffer(archive, text.data(), text.size(), 0), ZIP_FL_ENC_UTF_8);
    EXPECT_EQ(zip_close(archive), 0);
    zip_source_open(target);
    zip_source_seek(target, 0, SEEK_END);
    std::string bytes(static_cast<std::size_t>(zip_source_tell(target)), '\0');
    zip_source_seek(target, 0, SEEK_SET);
    zip_source_read(target, bytes.data(), bytes.size());
    zip_source_close(target);
    zip_source_free(target);
    return bytes;
}
