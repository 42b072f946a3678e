#include "torv/songs/xml_document.h"

#include "torv/songs/song_error.h"
#include "torv/songs/text_encoding.h"

#include <algorithm>
#include <cstdint>
#include <rapidxml/rapidxml.hpp>

namespace torv::songs {

namespace {

constexpr int kDeepest = 200; // the parser calls itself for each level
constexpr size_t kMostElements = 4000000;

using Node = rapidxml::xml_node<>;

const Node* NodeOf(const void* node) { return static_cast<const Node*>(node); }

const void* FirstElement(const Node* node) {
    while (node && node->type() != rapidxml::node_element)
        node = node->next_sibling();
    return node;
}

[[noreturn]] void Fail(std::string_view text, size_t at, const std::string& what) {
    const auto line = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n') + 1;
    throw SongError("line " + std::to_string(line) + ": " + what);
}

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

/// Walks over an XML text as the parser will, so that the parser never meets what would exhaust the stack or the
/// memory.
class ShapeCheck {
public:
    explicit ShapeCheck(std::string_view text) : m_text(text) {}

    void Run() {
        while ((m_at = m_text.find('<', m_at)) != std::string_view::npos) {
            if (Begins("<!--"))
                PassBehind("-->");
            else if (Begins("<![CDATA["))
                PassBehind("]]>");
            else if (Begins("<?"))
                PassBehind("?>");
            else if (Begins("<!"))
                PassDocumentType();
            else if (Begins("</"))
                PassBehind(">", -1);
            else
                PassElement();
        }
    }

private:
    bool Begins(std::string_view what) const { return m_text.substr(m_at, what.size()) == what; }

    void PassBehind(std::string_view what, int deeper = 0) {
        const size_t end = m_text.find(what, m_at);
        if (end == std::string_view::npos)
            Fail(m_text, m_at, "this is not closed: the file is cut, or no XML");
        if (m_depth + deeper < 0)
            Fail(m_text, m_at, "this ends an element that has not begun");
        m_at = end + what.size();
        m_depth += deeper;
    }
    void PassDocumentType() {
        const size_t from = m_at;
        PassBehind(">");
        if (m_text.substr(from, m_at - from).find('[') != std::string_view::npos)
            Fail(m_text, from, "a document type with declarations of its own is not read");
    }
    void PassElement() {
        const size_t from = m_at++;
        if (++m_elements > kMostElements)
            Fail(m_text, from, "more than 4,000,000 elements, which no song has");
        if (++m_depth > kDeepest)
            Fail(m_text, from, "elements are nested deeper than 200, which no song's are");
        while (m_at < m_text.size() && m_text[m_at] != '>') {
            const char c = m_text[m_at];
            if (c == '<')
                Fail(m_text, from, "an element's mark is not closed");
            if (c == '"' || c == '\'') {
                if (!IsBehindEqualSign())
                    Fail(m_text, from, "a quotation mark stands where none can");
                m_at = std::min(m_text.find(c, m_at + 1), m_text.size());
            }
            ++m_at;
        }
        if (m_at >= m_text.size())
            Fail(m_text, from, "an element's mark is not closed: the file is cut");
        if (m_text[m_at - 1] == '/')
            --m_depth;
    }
    bool IsBehindEqualSign() const {
        size_t at = m_at - 1;
        while (IsSpace(m_text[at]))
            --at;
        return m_text[at] == '=';
    }

    std::string_view m_text;
    size_t m_at = 0;
    int m_depth = 0;
    size_t m_elements = 0;
};

/// A name without its namespace's prefix.
std::string_view LocalName(std::string_view name) { return name.substr(name.find(':') + 1); }

/// Takes the root's prefix from all elements.
void DropPrefixes(Node* root) {
    const std::string_view name(root->name(), root->name_size());
    const std::string prefix(name.substr(0, name.size() - LocalName(name).size()));
    if (prefix.empty())
        return;
    for (Node* node = root; node;) {
        const std::string_view own(node->name(), node->name_size());
        if (own.starts_with(prefix))
            node->name(node->name() + prefix.size(), node->name_size() - prefix.size());
        Node* next = node->first_node();
        for (; !next && node != root; node = node->parent())
            next = node->next_sibling();
        node = next;
    }
}

/// The encoding's name in the first line, or empty.
std::string DeclaredEncoding(std::string_view text) {
    const std::string_view first = text.substr(0, std::min<size_t>(text.find("?>"), 200));
    const size_t name = first.find("encoding");
    const size_t quote = name == std::string_view::npos ? name : first.find_first_of("\"'", name);
    if (!first.starts_with("<?xml") || quote == std::string_view::npos)
        return "";
    return std::string(first.substr(quote + 1, first.find(first[quote], quote + 1) - quote - 1));
}

std::string InUtf8(std::string bytes) {
    const std::string_view mark = std::string_view(bytes).substr(0, 2);
    if (mark == "\xFF\xFE" || mark == "\xFE\xFF")
        return Utf16ToUtf8(bytes);
    if (bytes.starts_with("\xEF\xBB\xBF"))
        return bytes.substr(3);
    const std::string name = DeclaredEncoding(bytes);
    if (name.empty())
        return bytes;
    const auto encoding = TextEncodingNamed(name);
    if (!encoding)
        throw SongError("is in the encoding \"" + name.substr(0, 40) + "\", which is not known: save it as UTF-8");
    return *encoding == kUtf8 ? bytes : ToUtf8(bytes, *encoding);
}

} // namespace

std::string_view XmlElement::Name() const {
    return m_node ? std::string_view(NodeOf(m_node)->name(), NodeOf(m_node)->name_size()) : std::string_view();
}

std::string_view XmlElement::Text() const {
    return m_node ? std::string_view(NodeOf(m_node)->value(), NodeOf(m_node)->value_size()) : std::string_view();
}

std::string_view XmlElement::Attribute(const char* name) const {
    const auto* const attribute = m_node ? NodeOf(m_node)->first_attribute(name) : nullptr;
    return attribute ? std::string_view(attribute->value(), attribute->value_size()) : std::string_view();
}

XmlElement XmlElement::Child(const char* name) const {
    return XmlElement(m_node ? NodeOf(m_node)->first_node(name) : nullptr);
}

XmlElement::Iterator XmlElement::begin() const {
    return Iterator(XmlElement(m_node ? FirstElement(NodeOf(m_node)->first_node()) : nullptr));
}

XmlElement XmlElement::Next() const { return XmlElement(FirstElement(NodeOf(m_node)->next_sibling())); }

struct XmlDocument::Parsed {
    std::string text; ///< the tree points into it
    rapidxml::xml_document<> tree;
};

XmlDocument::XmlDocument(std::string bytes) : m_parsed(std::make_unique<Parsed>()) {
    std::string& text = m_parsed->text;
    text = InUtf8(std::move(bytes));
    ShapeCheck(text).Run();
    try {
        m_parsed->tree.parse<rapidxml::parse_trim_whitespace | rapidxml::parse_validate_closing_tags>(text.data());
    } catch (const rapidxml::parse_error& error) {
        Fail(text, static_cast<size_t>(error.where<char>() - text.data()),
             std::string("this is not XML as it should be (") + error.what() + "): save it anew");
    }
    for (Node* node = m_parsed->tree.first_node(); node; node = node->next_sibling())
        if (node->type() == rapidxml::node_element)
            DropPrefixes(node);
}

std::optional<std::string_view> XmlDocument::RootName(std::string_view text) {
    while (true) {
        const size_t begin = text.find_first_not_of(" \t\r\n");
        if (begin == std::string_view::npos)
            return std::nullopt;
        text.remove_prefix(begin);
        if (text.front() != '<')
            return std::string_view();
        if (!text.starts_with("<?") && !text.starts_with("<!"))
            return LocalName(text.substr(1, text.find_first_of(" \t\r\n/>") - 1));
        const std::string_view close = text.starts_with("<?") ? "?>" : text.starts_with("<!--") ? "-->" : ">";
        const size_t end = text.find(close);
        if (end == std::string_view::npos)
            return std::nullopt;
        text.remove_prefix(end + close.size());
    }
}

XmlDocument::~XmlDocument() = default;

XmlElement XmlDocument::Root() const { return XmlElement(FirstElement(m_parsed->tree.first_node())); }

} // namespace torv::songs
