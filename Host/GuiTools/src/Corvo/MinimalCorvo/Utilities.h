#pragma once

#include "MinimalCorvo/Types.h"

#include <cstddef>
#include <cstdint>

namespace GenApi {
class INodeMap;
}

namespace Corvo {

enum eFolderType : int {
    ftCorvoBaseDir = 0,            ///< Folder of the loaded module that contains this library.
    ftCorvoDefaultCdfDir = 1,      ///< CORVO_DEFAULT_CDF_DIR, else the base directory.
    ftCorvoSharedLib = 2,          ///< The base directory.
    ftCorvoConfigFileRegistry = 3, ///< CORVO_CONFIG_FILE_REGISTRY_PATH, else found near the base directory.
    ftCorvoTL = 4,                 ///< CORVO_TL_PATH, else the base directory.
    ftCorvoTLSupport = 5,          ///< The base directory.

    FolderType_CorvoBaseDir = ftCorvoBaseDir,
    FolderType_CorvoDefaultCdfDir = ftCorvoDefaultCdfDir,
    FolderType_CorvoSharedLib = ftCorvoSharedLib,
    FolderType_CorvoConfigFileRegistry = ftCorvoConfigFileRegistry
};

/// A folder of the library, without a separator at its end. Each is worked out by the first successful call, for the
/// life of the process; any thread may call. \returns text that is never freed.
/// \throws RuntimeException for a path of 4096 characters or more, an unknown type, or when the dynamic loader cannot
/// tell where the library is.
const char *getCorvoFolderPath(eFolderType type);

/// "/"
const char *getCorvoPathSeperator();
/// ":"
const char *getCorvoPathListDelimiter();

/// \returns whether the variable is set; only then is \p value assigned. As with getenv, nobody may change the
/// environment meanwhile.
bool GetValueOfEnvironmentVariable(const String_t &name, String_t &value);

/// Replaces each "$(NAME)" by the value of that environment variable (nothing when it is not set) and "$$" by "$"; any
/// other "$" stays. A text of fewer than 4 characters is left alone. \returns the number of references replaced, or -1
/// after a failure such as lack of memory, which leaves the text as it was.
int ExpandEnvironmentVariables(String_t &text) noexcept;

/// Writes \p count bytes as two lower-case hexadecimal digits each, with \p separator (may be null) between two bytes
/// and a terminating zero. \returns the length without the zero; when \p destination is null or \p size too small
/// nothing is written and the needed size, the zero included, is returned.
std::size_t HexEncodeString(const void *source, std::size_t count, char *destination, std::size_t size,
                            const char *separator = nullptr);
String_t HexEncodeString(const void *source, std::size_t count, const char *separator = nullptr);

/// The reverse. A byte is two hexadecimal digits of either case, or one where the next character is none (so "a:ff" is
/// 0A FF and "abc" is AB 0C); all other characters separate bytes and are skipped. \returns the number of bytes; when
/// \p destination is null or \p size is smaller than that number nothing is written. A null text has no bytes.
std::size_t HexDecodeString(const char *text, void *destination, std::size_t size);
String_t HexDecodeString(const String_t &text);

/// Splits the text into tokens at any of the delimiter characters (empty tokens do not count) and the token with that
/// zero-based index at its first "=" into key and value, white space at their ends removed; the value may contain
/// further "=". A token without "=" is a key with an empty value. \param key, value null when not wanted; stored only
/// on success. \returns false when text, delimiters, both outputs or the token are missing, and for a token with
/// neither key nor value.
bool getKeyAndValueFromString(const char *text, const char *delimiters, std::size_t index, String_t *key,
                              String_t *value);

/// The value of the first token (see above) whose key is exactly \p key, upper and lower case told apart.
/// \returns false, and leaves \p value alone, when there is none.
bool getValueByKeyFromString(const char *text, const char *delimiters, const char *key, String_t &value);

/// The piece with that zero-based index of a text split at every \p separator (a text as a whole, such as "||"). Empty
/// pieces count, so a text of n separators has n + 1 pieces; an empty separator splits nothing. \returns false, and
/// leaves \p piece alone, when there is no such piece.
bool extractSubString(const String_t &text, const String_t &separator, std::size_t index, String_t &piece);

/// An IPv4 address in host order as "192.168.1.20".
String_t DottedQuad(std::uint32_t address);
/// The reverse, for exactly four decimal numbers. \returns false, and leaves \p address alone, for any other text.
bool ParseDottedQuad(const char *text, std::uint32_t &address);

/// The number in decimal.
String_t itos(unsigned int number);
/// The text with each blank replaced by "%20".
String_t replaceSpacesWith20(const String_t &text);
/// Reads a whole file, byte by byte as it stands. \throws RuntimeException "Failed to open file ..." when it cannot be
/// read; \p text is then left alone.
void textFileToString(const String_t &fileName, String_t &text);

/// The node map of a transport layer that has no parameters of its own. The caller hands it to DestroyNodeMap.
GenApi::INodeMap *CreateDefaultTransportLayerParamsNodeMap();
/// Destroys a node map made from an embedded document; null is fine.
void DestroyNodeMap(GenApi::INodeMap *nodeMap);

/// Threads have no names on this platform: these do nothing.
inline void SetThreadName(unsigned long /*threadId*/, const char * /*name*/) {}
inline void SetCurrentThreadName(const char * /*name*/) {}

} // namespace Corvo
