// The version-stamp block: a byte-packed record in the library's read-only
// data that tools find by its marker texts. Nothing in the library reads
// it, so it is marked used and retained to survive the compiler and a
// linker that collects unreferenced sections.
#include <bit>
#include <cstdint>

#include "utl/version.h"

namespace {

static_assert(std::endian::native == std::endian::little,
              "the stamp block's numbers are little-endian in the file");

#define KORUTL_STAMP_HEADER "VantrelXVTLVERvtlverXVantrel61100"
#define KORUTL_STAMP_MARKER "VTLVERVantrelXVTLVERvtlverVantrel"

// A marker followed directly by a zero-padded text value of N bytes.
template <unsigned N>
struct [[gnu::packed]] TextRecord {
  char marker[40];
  char value[N];
};

struct [[gnu::packed]] NumberRecord {
  char marker[40];
  uint16_t value;
};

struct [[gnu::packed]] StampBlock {
  char header[40];
  uint32_t stamp;
  TextRecord<40> maker;
  TextRecord<40> library;
  TextRecord<20> version;
  TextRecord<40> platform;
  TextRecord<70> legal;
  TextRecord<40> product;
  TextRecord<20> further_version;
  NumberRecord patch_level;
  NumberRecord release;
  NumberRecord file_os;
  NumberRecord file_type;
  uint16_t end;
};

static_assert(sizeof(StampBlock) ==
                  44 + 7 * 40 + (40 + 40 + 20 + 40 + 70 + 40 + 20) + 4 * (40 + 2) + 2,
              "the stamp block has no gaps");

#if defined(__has_attribute)
#if __has_attribute(retain) && defined(__ELF__)
#define KORUTL_RETAIN __attribute__((retain))
#endif
#endif
#ifndef KORUTL_RETAIN
#define KORUTL_RETAIN
#endif

// Aligned so that the stamp value is a naturally aligned 32-bit word.
const StampBlock version_stamp __attribute__((used, aligned(4))) KORUTL_RETAIN = {
    KORUTL_STAMP_HEADER,
    0xDD22AACCu,
    {KORUTL_STAMP_MARKER, KORUTL_MAKER_NAME},
    {KORUTL_STAMP_MARKER, KORUTL_LIB_NAME},
    {KORUTL_STAMP_MARKER, KORUTL_VERSION_TEXT},
    {KORUTL_STAMP_MARKER, KORUTL_PLATFORM_TEXT},
    {KORUTL_STAMP_MARKER, KORUTL_LEGAL_NOTICE},
    {KORUTL_STAMP_MARKER, KORUTL_PRODUCT_NAME},
    {KORUTL_STAMP_MARKER, KORUTL_FURTHER_VERSION},
    {KORUTL_STAMP_MARKER, KORUTL_PATCH_LEVEL},
    {KORUTL_STAMP_MARKER, KORUTL_RELEASE},
    {KORUTL_STAMP_MARKER, KORUTL_FILE_OS},
    {KORUTL_STAMP_MARKER, KORUTL_FILE_TYPE},
    0,
};

}  // namespace
