// The product setting "Use_Strict_Version", which keeps searches to the
// version asked for.
#ifndef KORUTL_READCONFIG_STRICT_VERSION_H
#define KORUTL_READCONFIG_STRICT_VERSION_H

namespace korutl::cfg {

// True when the setting of `product` (section "Products\<product>" of
// Halcyra's direct settings) is on: values and language libraries of the
// product are then never searched in its other versions. The setting is a
// number of at most three characters, on when not 0 modulo 256; a longer
// text is no valid setting and counts as unset.
bool strict_version(const char *product);

}  // namespace korutl::cfg

#endif
