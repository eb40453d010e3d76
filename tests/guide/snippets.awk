# Prints the C++ code blocks of a markdown file, each line where the compiler will name it.
/^```cpp$/ { inside = 1; print "#line " FNR + 1 " \"" FILENAME "\""; next }
/^```$/ { inside = 0 }
inside { print }
