#pragma once

#include "GenApi/INodeMap.h"

#include <cstddef>
#include <memory>

namespace GenApi {

/// How the camera description is stored.
enum EContentType_t { ContentType_Xml = 0, ContentType_ZippedXml = 1 };

/// Makes node maps from a camera description file and, optionally, documents injected into it.
///
/// Limits, each answered with a RuntimeException: 16 MiB as stored, 64 MiB unzipped, 250 times the zipped size, one
/// million tags; a DOCTYPE is refused. Copies share the same content. Not locked: one thread at a time.
class CNodeMapFactory {
public:
    /// A factory without content.
    CNodeMapFactory();
    /// Reads a file. \throws RuntimeException when it cannot be read.
    CNodeMapFactory(EContentType_t fileType, const gcstring &fileName);
    /// Takes a copy of \p dataSize bytes. \throws RuntimeException when they are too many or cannot be unzipped.
    CNodeMapFactory(EContentType_t dataType, const void *pData, std::size_t dataSize);

    bool IsLoaded() const;
    /// Adds the content of another factory. It is merged when the node map is made: a node of a new name is added, a
    /// category gets the features it does not list yet, any other node replaces the one of its name unless its
    /// MergePriority is lower.
    /// \throws what Preprocess of the other factory throws; LogicalErrorException when this one is preprocessed.
    void AddInjectionData(const CNodeMapFactory &injectionData);

    bool IsPreprocessed() const;
    /// Parses and merges what was loaded. The other operations do it when needed.
    /// \throws RuntimeException on malformed XML, with the offset in the file; LogicalErrorException without content.
    void Preprocess();
    /// The description as text: byte for byte as it came (unzipped) when nothing was injected or extracted, else with
    /// the changes, in UTF-8.
    gcstring ToXml();
    /// A factory that holds only the named node and the nodes it refers to, directly or through others.
    /// \throws RuntimeException when there is no such node.
    CNodeMapFactory ExtractSubtree(const gcstring &subTreeRootNodeName);

    /// Makes a node map that reads nothing from the device until a feature is used. The caller owns it: hand it to a
    /// CNodeMapRef or destroy it through IDestroy. Faulty nodes fail when they are used, not here.
    /// \throws RuntimeException, LogicalErrorException as Preprocess does.
    INodeMap *CreateNodeMap(const gcstring &deviceName = "Device");

private:
    struct SContent;
    std::shared_ptr<SContent> m_content;
};

} // namespace GenApi
