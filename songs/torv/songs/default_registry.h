#pragma once

namespace torv::songs {

/// Makes the libraries beside the program known to the databases, as long as it lives, on a machine whose registry
/// names none. On POSIX the installed default does so without it.
class DefaultRegistry {
public:
#if defined(_WIN32)
    DefaultRegistry();
    ~DefaultRegistry();
    DefaultRegistry(const DefaultRegistry&) = delete;
    DefaultRegistry& operator=(const DefaultRegistry&) = delete;

private:
    void* m_key = nullptr;
#else
    DefaultRegistry() {} // not defaulted: an object whose whole purpose is to live is no unused variable
#endif
};

} // namespace torv::songs
