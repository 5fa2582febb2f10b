// UTF-8 and UTF-16LE byte strings converted both ways for the .reg format.
#ifndef KORUTL_SIBLINGS_RSV_REGFILE_TEXT_H
#define KORUTL_SIBLINGS_RSV_REGFILE_TEXT_H

#include <string>
#include <string_view>

namespace korutl::regfile {

// False on an unpaired surrogate or an odd byte count.
bool utf16le_to_utf8(std::string_view in, std::string &out);
// False on bytes that are not well-formed UTF-8.
bool utf8_to_utf16le(std::string_view in, std::string &out);

}  // namespace korutl::regfile

#endif
