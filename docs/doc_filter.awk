# Doxygen input filter for the public headers. The headers are plain C with
# ordinary /* */ comments, written for people first; this filter lets
# Doxygen read them as documentation without changing their style:
#  - the file's first comment documents the file;
#  - a comment on lines of its own documents the declaration after it, and
#    all the declarations after it up to the next blank line (a member
#    group whose members share the comment);
#  - a comment after code on the same line documents that line's member;
#  - section banners (a comment opening with dashes) stay plain comments;
#  - inside documentation, characters Doxygen would read as commands or
#    markup (backslash paths, <product>, &amp;, %XY, #, @, $) are escaped.
# The line count is kept, so warnings point at the header's own lines.
# Doxygen shows text between double quotes or backticks as it stands, so
# only the text outside them is escaped.
function escape(text,    out, i, c) {
  out = ""
  for (i = 1; i <= length(text); i++) {
    c = substr(text, i, 1)
    if (c == "\"" && !in_code) in_quote = !in_quote
    else if (c == "`" && !in_quote) in_code = !in_code
    else if (!in_quote && !in_code && index("\\<>&%#@$", c) > 0) out = out "\\"
    out = out c
  }
  return out
}

# One line, comments rewritten; keeps the comment state across lines.
function rewrite(line,    start, code, rest, opening, end_at, body) {
  if (in_comment) {
    end_at = index(line, "*/")
    if (end_at == 0) return doc ? escape(line) : line
    in_comment = 0
    body = substr(line, 1, end_at - 1)
    return (doc ? escape(body) : body) substr(line, end_at)
  }
  start = index(line, "/*")
  if (start == 0) return line
  code = substr(line, 1, start - 1)
  rest = substr(line, start + 2)
  doc = 1
  in_quote = 0
  in_code = 0
  if (rest ~ /^ *-/) {
    doc = 0
    opening = "/*"
  } else if (code ~ /[^ \t]/) {
    opening = "/**<"
  } else if (!seen_first) {
    opening = "/** \\file " base_name " "
  } else {
    opening = "/**"
    own_line_doc = 1
  }
  seen_first = 1
  end_at = index(rest, "*/")
  if (end_at == 0) {
    in_comment = 1
    return code opening (doc ? escape(rest) : rest)
  }
  body = substr(rest, 1, end_at - 1)
  return code opening (doc ? escape(body) : body) substr(rest, end_at)
}

# Prints a comment and its declarations, grouped when there are several.
function flush(    i, prefix, suffix) {
  prefix = ""; suffix = ""
  if (declarations > 1) { prefix = "/** @{ */ "; suffix = " /** @} */" }
  for (i = 1; i <= held; i++) {
    if (i == 1) printf "%s", prefix
    printf "%s", block[i]
    if (i == held) printf "%s", suffix
    printf "\n"
  }
  held = 0; declarations = 0; holding = 0
}

FNR == 1 { base_name = FILENAME; sub(/.*\//, "", base_name) }
{
  own_line_doc = 0
  out = rewrite($0)
  if (holding && $0 ~ /^[ \t]*$/) flush()
  if (own_line_doc && !holding) holding = 1
  if (!holding) { print out; next }
  block[++held] = out
  if (!in_comment && $0 ~ /_API[ \t]/) declarations++
}
END { if (holding) flush() }
