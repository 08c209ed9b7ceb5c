# Writes the schema files as one C++ table: cmake -DFILES=a.sql;b.sql -DOUT=schema.cpp -P embed_schema.cmake
list(SORT FILES)
set(rows "")
foreach(path IN LISTS FILES)
  get_filename_component(name ${path} NAME)
  file(READ ${path} sql)
  string(APPEND rows "    {\"${name}\", R\"~sql~(${sql})~sql~\"},\n")
endforeach()
file(WRITE ${OUT} "#include \"schema.h\"\n\nnamespace qdb {\n\nconst SchemaFile kSchemaFiles[] = {\n${rows}    {nullptr, nullptr},\n};\n\n}  // namespace qdb\n")
# SPDX-License-Identifier: Apache-2.0
