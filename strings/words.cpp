// Word counting and field extraction at a one-character separator. The two
// divide a text differently on purpose: the count treats a run of
// separators as one gap, the extraction treats each separator (except one
// in the first position) as the end of a field.
#include "korutl.h"

extern "C" {

KORUTL_API int32_t KORVOStrGetWordCount(const char *text, char separator) {
  if (text == nullptr) return 0;
  int32_t count = 0;
  bool in_word = false;
  for (; *text != '\0'; ++text) {
    if (*text == separator) {
      in_word = false;
    } else if (!in_word) {
      in_word = true;
      ++count;
    }
  }
  return count;
}

KORUTL_API uint32_t KORVOStrGetWord(const char *text, char *word, char separator, int32_t index) {
  if (text == nullptr || word == nullptr || index < 0) return 0;
  uint32_t written = 0;
  int32_t field = 0;
  for (size_t i = 0; text[i] != '\0' && field <= index; ++i) {
    const bool is_separator = text[i] == separator;
    if (is_separator && i > 0) ++field;
    if (field == index && !is_separator) word[written++] = text[i];
  }
  word[written] = '\0';
  return written;
}

}  // extern "C"
