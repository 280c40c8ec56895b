#pragma once

// Raw extension tables behind plugin_helper_functions' classification.
namespace media_extension_lists {
extern const char* const image_entries[];
extern const int image_entries_count;
extern const char* const image_repeated_entries[];
extern const int image_repeated_entries_count;
extern const char* const audio_entries[];
extern const int audio_entries_count;
extern const char* const audio_repeated_entries[];
extern const int audio_repeated_entries_count;
extern const char* const video_entries[];
extern const int video_entries_count;
extern const char* const video_repeated_entries[];
extern const int video_repeated_entries_count;
}  // namespace media_extension_lists
