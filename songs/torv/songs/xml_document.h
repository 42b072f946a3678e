#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace torv::songs {

/// An element of an XmlDocument, which must outlive it; or none, which has no content and can be asked like any other.
class XmlElement {
public:
    XmlElement() = default;
    explicit XmlElement(const void* node) : m_node(node) {}

    explicit operator bool() const { return m_node != nullptr; }
    bool operator==(const XmlElement&) const = default;

    /// Without the prefix of its namespace where the root has one.
    std::string_view Name() const;
    /// The first text directly inside, without the space around it; entities are resolved.
    std::string_view Text() const;
    /// Empty when there is no such attribute.
    std::string_view Attribute(const char* name) const;
    bool Has(const char* name) const { return static_cast<bool>(Child(name)); }
    /// The first child of this name, or none.
    XmlElement Child(const char* name) const;
    /// The same, child in child.
    XmlElement Child(const char* name, const char* below) const { return Child(name).Child(below); }

    /// All child elements, for a range-based loop.
    class Iterator;
    Iterator begin() const;
    Iterator end() const;

private:
    XmlElement Next() const;

    const void* m_node = nullptr;
};

class XmlElement::Iterator {
public:
    explicit Iterator(XmlElement at) : m_at(at) {}
    XmlElement operator*() const { return m_at; }
    Iterator& operator++() {
        m_at = m_at.Next();
        return *this;
    }
    bool operator==(const Iterator&) const = default;

private:
    XmlElement m_at;
};

inline XmlElement::Iterator XmlElement::end() const { return Iterator(XmlElement()); }

/// The elements of an XML text in memory. Document types are passed over, nothing outside of the text is ever read, and
/// a text that is nested deeper than 200 elements or has more than 4,000,000 of them is refused.
class XmlDocument {
public:
    /// A text in UTF-8, in UTF-16 with its mark, or in the encoding that it declares. Throws SongError with the line.
    explicit XmlDocument(std::string bytes);
    ~XmlDocument();
    XmlDocument(const XmlDocument&) = delete;
    XmlDocument& operator=(const XmlDocument&) = delete;

    XmlElement Root() const;

    /// The name of the element that a text in UTF-8 begins with, behind declarations and comments; empty when it is not
    /// XML, nothing when the text ends before.
    static std::optional<std::string_view> RootName(std::string_view text);

private:
    struct Parsed;
    std::unique_ptr<Parsed> m_parsed;
};

} // namespace torv::songs
