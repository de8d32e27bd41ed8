# Plain comments as Doxygen reads them. A comment before a declaration belongs to it, one behind a
# field to that, the first one to the file; a line of dashes is no text. Pictures, tables and examples
# are what is indented: they stay as they are.

NR == 1 { sub(/^\/\*/, "/** @file"); commented = 1 }

# Behind a field or an enumerator.
/^ .*[,;0-9A-Fa-f] +\/\* / { sub(/\/\* /, "/**< ") }

# What a header needs for itself.
/^#define STP_MCEC_(API|ENUMERATOR|FIELD_AT)/ { print "/** For this header alone. */" }

# A field of which the comment of its record says enough.
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
