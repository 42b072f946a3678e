// Any bytes as an XML text: every element, its text and attributes.
#include "torv/songs/xml_document.h"
#include "torv/songs/song_error.h"

#include <cstddef>
#include <cstdint>

namespace {

size_t Walk(torv::songs::XmlElement element) {
    size_t bytes = element.Name().size() + element.Text().size() + element.Attribute("id").size();
    for (const torv::songs::XmlElement child : element)
        bytes += Walk(child);
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    try {
        const torv::songs::XmlDocument document({reinterpret_cast<const char*>(data), size});
        volatile size_t bytes = Walk(document.Root());
        (void)bytes;
    } catch (const torv::songs::SongError&) {
        // one clear line for the user
    }
    return 0;
}
