#pragma once

#include "torv/platform/afx/exception.h"
#include "torv/platform/afx/object.h"
#include "torv/platform/afx/string.h"
#include "torv/platform/export.h"
#include "torv/platform/system.h"

/// An open file. Operations throw CFileException (by value) when they fail, a closed file's included; offsets and
/// lengths are 64-bit. No buffer stands between caller and system.
class TORV_API CFile : public CObject {
public:
    /// How Open opens; to be combined.
    enum OpenFlags {
        modeRead = 0x0000,       ///< to read only
        modeWrite = 0x0001,      ///< to write only
        modeReadWrite = 0x0002,  ///< both
        shareCompat = 0x0000,    ///< as shareExclusive
        shareExclusive = 0x0010, ///< share bits have a meaning on Windows only
        shareDenyWrite = 0x0020, ///< others may read
        shareDenyRead = 0x0030,  ///< others may write
        shareDenyNone = 0x0040,  ///< others may do both
        modeNoInherit = 0x0080,  ///< not for child processes
        modeCreate = 0x1000,     ///< a new file, or an existing one emptied
        modeNoTruncate = 0x2000, ///< with modeCreate: an existing file keeps its content
        typeText = 0x4000,       ///< of no meaning: nothing is translated
        typeBinary = 0x8000      ///< of no meaning
    };
    /// Origins of Seek.
    enum SeekPosition {
        begin = 0,   ///< the file's beginning
        current = 1, ///< where it stands
        end = 2      ///< behind its last byte
    };
    static constexpr INT_PTR hFileNull = -1; ///< m_hFile while nothing is open

    CFile() = default;
    /// Throws when the file cannot be opened.
    CFile(LPCSTR path, UINT flags);
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    /// Closes; an error on the way is lost, so close by name what has been written.
    ~CFile() override;

    /// FALSE when it cannot be opened, and `error`, if given, tells why. A file that is open is closed first.
    /// On POSIX a name that does not exist is sought with "/" for "\" and then whatever the case of its letters.
    virtual BOOL Open(LPCSTR path, UINT flags, CFileException* error = nullptr);
    /// Harmless when nothing is open. Nothing is open afterwards, even when it throws.
    virtual void Close();
    /// Closes without a word about errors.
    virtual void Abort();
    /// Fewer than `bytes` at the end of the file only.
    virtual UINT Read(void* buffer, UINT bytes);
    /// All or an exception: a disk that takes only part of the bytes is full.
    virtual void Write(const void* buffer, UINT bytes);
    /// The new position. Beyond the end is allowed; before the beginning throws and moves nothing.
    virtual ULONGLONG Seek(LONGLONG offset, UINT from);
    /// Shorthands; the second returns the file's length.
    /// @{
    void SeekToBegin() { Seek(0, begin); }
    ULONGLONG SeekToEnd() { return Seek(0, end); }
    /// @}
    /// From the beginning, in bytes.
    virtual ULONGLONG GetPosition() const;
    /// The position does not change.
    virtual ULONGLONG GetLength() const;
    /// Cuts or grows (with zeros) the file; the position is at its end afterwards.
    virtual void SetLength(ULONGLONG length);
    /// Nothing is held back here, so what was written is already the system's; it does not wait for the disk.
    virtual void Flush();

    /// Absolute; empty when nothing is open.
    virtual CString GetFilePath() const;
    /// The path's last component.
    virtual CString GetFileName() const;

    /// Both throw; Rename refuses to replace a file.
    static void Remove(LPCSTR path);
    /// See Remove.
    static void Rename(LPCSTR from, LPCSTR to);

    INT_PTR m_hFile = hFileNull; ///< the system's handle

protected:
    /// Read and Write at a place of the file, in one call of the system; where the position is afterwards is left open.
    /// @{
    UINT ReadAt(ULONGLONG place, void* buffer, UINT bytes) const;
    void WriteAt(ULONGLONG place, const void* buffer, UINT bytes);
    /// @}

    CString m_strFileName; ///< the absolute path

private:
    void Check(DWORD error) const;
};
