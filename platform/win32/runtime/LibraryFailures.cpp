// What the GNU C++ library calls where one of its containers cannot go on: every such failure is a
// std::bad_alloc here. The library's own functions for this build a message each, and so bring 56
// KB of string and locale code into a module that drops all of them alike.

#include <new>

namespace std {

void __throw_bad_alloc() { throw bad_alloc(); }
void __throw_bad_array_new_length() { throw bad_alloc(); }
void __throw_bad_cast() { throw bad_alloc(); }
void __throw_bad_exception() { throw bad_alloc(); }
void __throw_bad_function_call() { throw bad_alloc(); }
void __throw_bad_typeid() { throw bad_alloc(); }
void __throw_domain_error(const char*) { throw bad_alloc(); }
void __throw_invalid_argument(const char*) { throw bad_alloc(); }
void __throw_length_error(const char*) { throw bad_alloc(); }
void __throw_logic_error(const char*) { throw bad_alloc(); }
void __throw_out_of_range(const char*) { throw bad_alloc(); }
void __throw_out_of_range_fmt(const char*, ...) { throw bad_alloc(); }
void __throw_overflow_error(const char*) { throw bad_alloc(); }
void __throw_range_error(const char*) { throw bad_alloc(); }
void __throw_runtime_error(const char*) { throw bad_alloc(); }
void __throw_underflow_error(const char*) { throw bad_alloc(); }

} // namespace std
