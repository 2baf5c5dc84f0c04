#pragma once

#include <QString>

#include <libheif/heif.h>

namespace pelorin {

// The libheif functions the program calls. libheif brings its codecs with it (x265, de265,
// dav1d, aom: a dozen libraries and their start-up work), which a command on JPEGs never
// needs, so the library is opened the first time a HEIF or AVIF file is read, not when the
// program starts.
#define PELORIN_HEIF_FUNCTIONS(F)                     \
    F(init)                                           \
    F(context_alloc)                                  \
    F(context_free)                                   \
    F(context_set_maximum_image_size_limit)           \
    F(context_read_from_reader)                       \
    F(context_get_primary_image_handle)               \
    F(context_get_number_of_top_level_images)         \
    F(image_handle_release)                           \
    F(image_handle_get_width)                         \
    F(image_handle_get_height)                        \
    F(image_handle_has_alpha_channel)                 \
    F(image_handle_is_premultiplied_alpha)            \
    F(image_handle_get_luma_bits_per_pixel)           \
    F(image_handle_get_number_of_metadata_blocks)     \
    F(image_handle_get_list_of_metadata_block_IDs)    \
    F(image_handle_get_metadata_type)                 \
    F(image_handle_get_metadata_content_type)         \
    F(image_handle_get_metadata_size)                 \
    F(image_handle_get_metadata)                      \
    F(image_handle_get_color_profile_type)            \
    F(image_handle_get_raw_color_profile_size)        \
    F(image_handle_get_raw_color_profile)             \
    F(image_handle_get_number_of_thumbnails)          \
    F(image_handle_get_list_of_thumbnail_IDs)         \
    F(image_handle_get_thumbnail)                     \
    F(decoding_options_alloc)                         \
    F(decoding_options_free)                          \
    F(decode_image)                                   \
    F(image_release)                                  \
    F(image_get_plane_readonly)                       \
    F(image_get_width)                                \
    F(image_get_height)                               \
    F(image_get_bits_per_pixel_range)

struct HeifLibrary {
#define PELORIN_HEIF_MEMBER(name) decltype(&::heif_##name) name = nullptr;
    PELORIN_HEIF_FUNCTIONS(PELORIN_HEIF_MEMBER)
#undef PELORIN_HEIF_MEMBER
};

// libheif, opened and initialised on the first call (from any thread); null with the reason
// when it cannot be opened or lacks a function. Later calls return the same answer.
const HeifLibrary* heifLibrary(QString* error = nullptr);

}  // namespace pelorin
