#pragma once

#include "torv/platform/platform.h"
#include "torv/stream/extend_buffer.h"

#include <memory>
#include <vector>

/// One chunk. Identifier and form type are four characters, the first one lowest, as torv::ChunkId makes them.
struct CHUNK_INFO {
    DWORD id;     ///< as ChunkId makes it
    DWORD form;   ///< 0 for a chunk without one
    DWORD offset; ///< file position of the data, behind the header and the form type
    DWORD size;   ///< bytes of data; a form type is not counted
};
static_assert(sizeof(CHUNK_INFO) == 16 && offsetof(CHUNK_INFO, form) == 4 && offsetof(CHUNK_INFO, offset) == 8 &&
              offsetof(CHUNK_INFO, size) == 12);

namespace torv {

/// Four characters as a chunk's identifier, the first one lowest.
constexpr DWORD ChunkId(const char (&text)[5]) {
    DWORD id = 0;
    for (int i = 3; i >= 0; --i)
        id = id << 8 | static_cast<BYTE>(text[i]);
    return id;
}

inline constexpr DWORD kRiffChunk = ChunkId("RIFF");   ///< the chunk that is a file
inline constexpr DWORD kWaveForm = ChunkId("WAVE");    ///< its form, of a wave
inline constexpr DWORD kFormatChunk = ChunkId("fmt "); ///< how a wave's samples are laid out
inline constexpr DWORD kDataChunk = ChunkId("data");   ///< the samples

/// The text of a file exception's cause, 0..14; empty for any other.
TORV_API const char* FileErrorText(int cause);

} // namespace torv

/// Reads and writes a file of nested chunks: identifier, little-endian size, data; "RIFF" and "LIST" have a form type
/// before their data. No pad byte follows an odd size, and none is skipped: the next chunk starts right after the data.
///
/// What is open at the moment is a path of chunks, at most 64 deep. Reading, Descend and Ascend walk it; writing,
/// CreateChunk and CloseChunk. Chunks that lie about their size, running past the chunk or file around them, end the
/// search for chunks there.
///
/// A file operation that fails, or for which there is no memory, gives 0, and its cause is kept until it is asked for:
/// for memory, the generic one. A chunk that would pass 32 bits of size or position is refused as a full disk. One
/// thread at a time.
class TORV_API CxRiff {
public:
    /// Opens the file for reading and writing; null opens nothing.
    explicit CxRiff(const char* name = nullptr);
    /// Works on the caller's file, which must outlive this object and is not closed by it (unless Open opened it).
    explicit CxRiff(CFile* file);
    CxRiff(const CxRiff&) = delete;
    CxRiff& operator=(const CxRiff&) = delete;
    /// Closes. A class that overrides CloseChunk closes in its own destructor, or open chunks get sizes of this class.
    virtual ~CxRiff();

    /// `flags` are CFile's. A file that this object had opened is closed first; the path is empty afterwards.
    int Open(const char* name, UINT flags);
    /// Closes what Open has opened. Chunks still being written are closed first, so that their sizes are true. 0 when
    /// there was nothing to close, and when a size or the file's end could not be written; it is closed all the same.
    int Close();
    /// Non-zero when Open has opened a file that is not closed yet.
    int IsOpen() const { return m_nOpened; }

    /// Deletes a file by name. 0 when the system refuses.
    int Remove(const char* name);
    /// Refuses to replace a file.
    int Rename(const char* oldName, const char* newName);
    /// CFile's origins. The new position.
    ULONGLONG Seek(LONGLONG offset, UINT from);
    /// Of the file, in bytes; 0 when it cannot be told.
    ULONGLONG GetPosition();
    /// Bytes read, fewer than asked for at the end of the file.
    DWORD Read(void* buffer, DWORD count);
    /// Into the buffer at its position; above 0x7FFFFFFF bytes the rest of the file.
    DWORD Read(CExtendBuffer* buffer, DWORD count);
    /// At the file's position, which is no chunk's data as far as sizes go.
    int Write(const void* buffer, DWORD count);

    /// Enters the level's first chunk of this identifier and form type (0: none); its data are read next. 0, and
    /// nothing has changed, when there is none.
    int Descend(CHUNK_INFO& info, DWORD id, DWORD form);
    /// Leaves the innermost chunk; what follows its data is read next. Its size is not written.
    int Ascend();
    /// The first chunk inside the innermost one, or in the file.
    int FindFirstChunk(CHUNK_INFO& info);
    /// The chunk behind `info`, in the level that FindFirstChunk or Descend searched last, or Ascend came back to.
    int FindNextChunk(CHUNK_INFO& info);
    /// Whether the form type follows the header of such chunks: "RIFF" and "LIST".
    int ChunkHasForm(DWORD id) const;

    /// Starts a chunk behind the data of the innermost one, or behind all that this object has written to the file
    /// (from its beginning, whatever it holds). A form type of 0 is not written.
    int CreateChunk(DWORD id, DWORD form);
    /// Puts bytes behind the innermost chunk's data. No bytes are a success.
    int AddData(const void* buffer, DWORD count);
    /// The whole content of the buffer.
    int AddData(CExtendBuffer* buffer);
    /// Bytes of another file, from its offset `from`; 1 when all of them were there. The chunk's size becomes the
    /// number of bytes copied, even when it held data before, so copy a chunk's data at once.
    int AddData(CFile* source, DWORD from, DWORD count);
    /// Writes the innermost chunk's size and leaves the chunk. The file's position is behind the size field.
    virtual int CloseChunk();

    /// The cause of the last failure (CFileException's), 0 for none; non-zero `reset` forgets it.
    int GetError(int reset);
    /// The text of that cause; empty for none.
    const char* GetErrorText() const { return torv::FileErrorText(m_nError); }
    /// Tells the user of a failure, if there was one, and forgets it. A null parent is the application's window. Throws
    /// std::bad_alloc.
    void ErrorMessageBox(CWnd* parent);

protected:
    /// Keeps a cause for GetError; 0 counts as CFileException::generic. Returns 0.
    int RecordError(int cause);
    /// CloseChunk in either byte order.
    int CloseChunk(bool bigEndian);

private:
    struct Level {
        CHUNK_INFO info;
        DWORD headerBytes; ///< 8, or 12 with a form type
        ULONGLONG end;     ///< of the data
        bool isWritten;    ///< its size in the file is out of date
    };

    CFile& File() const;
    int OpenFile(const char* name, UINT flags);
    /// Closes with the given way of closing a chunk: the destructor's is this class's own.
    template <class CloseInnermost>
    int CloseFile(CloseInnermost closeInnermost);
    template <class Operation>
    bool Attempt(Operation operation);
    bool ReadHeader(ULONGLONG position, CHUNK_INFO& info);
    bool EnterLevel(ULONGLONG& position);
    bool CanGoDeeper();
    bool HasRoom(DWORD count);
    void GrowPath(DWORD count);

    std::unique_ptr<CFile> m_pOwnFile;
    CFile* m_pFile = nullptr;
    int m_nOpened = 0;
    std::vector<Level> m_path; ///< innermost last
    ULONGLONG m_qwSearchLimit = 0;
    ULONGLONG m_qwWritten = 0; ///< end of what this object has written
    int m_nError = 0;
};
