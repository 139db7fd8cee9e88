#include <gk/base/exception.h>

#include <sstream>
#include <vector>

#include <gk/base/archive.h>

#include <gk/base/math_error.h>
#include <gk/base/pel_errors.h>

namespace {

void appendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

/// UTF-8 of a wide string, whether wchar_t holds UTF-32 or UTF-16. Anything that is not a valid
/// code point (a lone surrogate, a value past U+10FFFF) becomes U+FFFD, so what() is always
/// valid UTF-8.
std::string toUtf8(const std::wstring& w) {
  constexpr char32_t kReplacement = 0xFFFD;
  std::string out;
  out.reserve(w.size());
  for (std::size_t i = 0; i < w.size(); ++i) {
    char32_t c = static_cast<char32_t>(w[i]);
    if (sizeof(wchar_t) == 2) {
      c &= 0xFFFF;
    }
    if (c >= 0xD800 && c <= 0xDBFF && sizeof(wchar_t) == 2 && i + 1 < w.size()) {
      const char32_t low = static_cast<char32_t>(w[i + 1]) & 0xFFFF;
      if (low >= 0xDC00 && low <= 0xDFFF) {
        c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        ++i;
      }
    }
    if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) {
      c = kReplacement;
    }
    appendUtf8(out, c);
  }
  return out;
}

/// The code points of UTF-8 bytes; anything malformed becomes U+FFFD, so any bytes decode.
std::wstring fromUtf8(const std::string& s) {
  constexpr char32_t kReplacement = 0xFFFD;
  std::wstring out;
  std::size_t i = 0;
  while (i < s.size()) {
    const auto b = static_cast<unsigned char>(s[i]);
    int extra = 0;
    char32_t c = 0;
    if (b < 0x80) {
      c = b;
    } else if ((b & 0xE0) == 0xC0) {
      extra = 1;
      c = b & 0x1F;
    } else if ((b & 0xF0) == 0xE0) {
      extra = 2;
      c = b & 0x0F;
    } else if ((b & 0xF8) == 0xF0) {
      extra = 3;
      c = b & 0x07;
    } else {
      out += static_cast<wchar_t>(kReplacement);
      ++i;
      continue;
    }
    bool ok = i + static_cast<std::size_t>(extra) < s.size();
    for (int k = 1; ok && k <= extra; ++k) {
      const auto cont = static_cast<unsigned char>(s[i + static_cast<std::size_t>(k)]);
      ok = (cont & 0xC0) == 0x80;
      c = (c << 6) | (cont & 0x3F);
    }
    const char32_t minimum[4] = {0, 0x80, 0x800, 0x10000};
    if (!ok || c < minimum[extra] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
      out += static_cast<wchar_t>(kReplacement);
      ++i;
      continue;
    }
    if (sizeof(wchar_t) == 2 && c >= 0x10000) {
      c -= 0x10000;
      out += static_cast<wchar_t>(0xD800 + (c >> 10));
      out += static_cast<wchar_t>(0xDC00 + (c & 0x3FF));
    } else {
      out += static_cast<wchar_t>(c);
    }
    i += static_cast<std::size_t>(extra) + 1;
  }
  return out;
}

}  // namespace

gkException::~gkException() = default;

void gkException::dispatchSerialize(gkArchive& ar) {
  if (haveVisited(static_cast<const gkException*>(this), sizeof(gkException))) {
    return;
  }
  unsigned char version = 0;
  ar || version;
  if (version != 0) {
    throw gkArchive::UnknownVersion("gkException", 0);
  }
  gkPersistent::dispatchSerialize(ar);
  std::vector<unsigned char> bytes;
  if (!ar.isLoading()) {
    const std::string text = what();
    bytes.assign(text.begin(), text.end());
  }
  ar.container(bytes, 1);
  if (ar.isLoading()) {
    restoreMessage(fromUtf8(std::string(bytes.begin(), bytes.end())));
  }
  setVisited(static_cast<const gkException*>(this), sizeof(gkException));
}

void gkException::restoreMessage(const std::wstring& /*message*/) {}

const char* gkException::what() const noexcept {
  if (!whatBuilt_) {
    try {
      std::wostringstream os;
      message_(os);
      what_ = toUtf8(os.str());
    } catch (...) {
      // what() must not throw; without memory for the text, give the class of failure.
      return "gkException";
    }
    whatBuilt_ = true;
  }
  return what_.c_str();
}

void gkException::message_(std::wostream& /*os*/) const {}

gkExceptionWithString::gkExceptionWithString(const wchar_t* message)
    : messageText_(message != nullptr ? message : L"") {}

gkExceptionWithString::gkExceptionWithString(const std::wstring& message) : messageText_(message) {}

gkExceptionWithString::~gkExceptionWithString() = default;

void gkExceptionWithString::message_(std::wostream& os) const {
  os << messageText_;
}

void gkExceptionWithString::restoreMessage(const std::wstring& message) {
  messageText_ = message;
  messageChanged();
}

gkMathError::Errors::~Errors() = default;
gkMathError::Singular::~Singular() = default;
gkPel::BadWindow::~BadWindow() = default;
