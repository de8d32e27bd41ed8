# Marks plain comments for Doxygen. The first comment belongs to the file, a comment before a declaration
# to the declaration, and a comment after a field to the field. Section titles (dashes) are skipped.
# Indented text (diagrams, tables, examples) is printed verbatim.

NR == 1 { sub(/^\/\*/, "/** @file"); commented = 1 }

# After a field or an enumerator.
/^ .*[,;0-9A-Fa-f] +\/\* / { sub(/\/\* /, "/**< ") }

# Internal macros of a header.
/^#define STP_MCEC_(API|ENUMERATOR|FIELD_AT)/ { print "/** Internal. */" }

# A field without a comment: Doxygen requires one.
/^typedef struct .*\{$/ { record = 1 }
/^}/ { record = 0 }
record && /;$/ { sub(/$/, " /**< \\&nbsp; */") }

/^ *\/\*( |$)/ && !/\/\* -+ / { sub(/\/\*/, "/**"); commented = 1 }

commented {
  text = $0
  sub(/^ *(\/\*\*|\*\/| \*)/, "", text)
  indented = text ~ /^   / && text !~ /^ +- / && !listed
  if (text ~ /^ +- /) listed = 1
  if (text ~ /^ ?[^ ]/) listed = 0
  if (indented && !verbatim) { verbatim = 1; print " * @verbatim" }
  if (verbatim && (text ~ /^ ?[^ ]/ || /\*\/$/) && !indented) { verbatim = 0; print " * @endverbatim" }
}

{ print }

commented && /\*\/$/ { commented = listed = 0 }
