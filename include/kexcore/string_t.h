#pragma once

#include <string>

// The host's string type: KexStringT<wchar_t> is wide text (UTF-16 on Windows, UTF-32 elsewhere),
// KexStringT<char> is UTF-8. A value; copying copies the text.
template <class C>
using KexStringT = std::basic_string<C>;
