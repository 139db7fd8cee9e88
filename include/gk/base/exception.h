#pragma once

#include <exception>
#include <iosfwd>
#include <string>

#include <gk/base/persistent.h>
#include <gk/gk_export.h>

/// Base of every exception of the library and its base kit. Thrown by value, caught by
/// reference. Persistent, so that an error can travel through an archive.
class GK_EXPORT gkException : public gkPersistent, public std::exception {
 public:
  gkException() = default;
  gkException(const gkException& o) : gkPersistent(o), std::exception(o) {}
  gkException& operator=(const gkException& o) {
    gkPersistent::operator=(o);
    std::exception::operator=(o);
    what_.clear();
    whatBuilt_ = false;
    return *this;
  }
  ~gkException() override;

  /// The message written by message_(), encoded as UTF-8 (built on first call and kept).
  const char* what() const noexcept override;

  /// Writes the message to os. The base exception has no message and writes nothing.
  virtual void message_(std::wostream& os) const;

 protected:
  /// The exception layer: version byte 0, the persistent layer, then the message as UTF-8
  /// (a byte count and the bytes). Loading hands the message to restoreMessage.
  void dispatchSerialize(gkArchive& ar) override;
  /// Takes a message read from an archive. The base exception keeps none.
  virtual void restoreMessage(const std::wstring& message);
  /// Forgets the text what() built, after the message changed.
  void messageChanged() noexcept {
    what_.clear();
    whatBuilt_ = false;
  }

 private:
  mutable std::string what_;
  mutable bool whatBuilt_ = false;
};

/// An exception that carries one wide-character message (possibly empty).
class GK_EXPORT gkExceptionWithString : public gkException {
 public:
  gkExceptionWithString() = default;
  explicit gkExceptionWithString(const wchar_t* message);
  explicit gkExceptionWithString(const std::wstring& message);
  gkExceptionWithString(const gkExceptionWithString&) = default;
  gkExceptionWithString& operator=(const gkExceptionWithString&) = default;
  ~gkExceptionWithString() override;

  /// The stored message.
  const std::wstring& message() const noexcept { return messageText_; }

  /// Writes the stored message.
  void message_(std::wostream& os) const override;

 protected:
  void restoreMessage(const std::wstring& message) override;

 private:
  std::wstring messageText_;
};
