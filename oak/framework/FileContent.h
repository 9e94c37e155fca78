// Files and streams as a whole.
#pragma once

#include <string>
#include <string_view>

#include "oak/base/Exceptions.h"

namespace oak {

/// A file or stream could not be read or written. The message names it and gives
/// the system's text.
class EFileError : public EOSError {
  using EOSError::EOSError;
};

/// All bytes of a file. Raises EFileError. Any thread.
std::string ReadFileContent(const TString& path);
/// Makes these bytes the file's content. They are written to a new file beside it,
/// which then takes its place: on failure the old file is there as it was, and
/// EFileError is raised. Any thread.
void ReplaceFileContent(const TString& path, std::string_view bytes);

/// The bytes of a stream from where it stands to its end. Raises EFileError.
std::string ReadStreamContent(IStream& stream);
/// Writes all bytes to a stream. Raises EFileError.
void WriteStreamContent(IStream& stream, std::string_view bytes);

}  // namespace oak
