# Compile options of everything that is built here: results are the same bits with every compiler (no contraction into
# fused multiply-add, no fast-math). errno is not set, so that roots can be vectorised. That warnings are errors is said
# by the presets of this tree alone.
add_library(qx_compile_options INTERFACE)
target_compile_features(qx_compile_options INTERFACE cxx_std_20)
target_compile_options(qx_compile_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
  -ffp-contract=off -fno-math-errno)
if(QX_SANITIZE)
  set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(qx_compile_options INTERFACE ${sanitizers})
  target_link_options(qx_compile_options INTERFACE ${sanitizers})
endif()
