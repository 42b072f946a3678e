#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/types.h"

/// Threads and the handles by which others know them. Any thread has a number and may have a queue and windows, those
/// that were begun otherwise included; a handle is had from CreateThread or DuplicateHandle only.
///
/// Suspension never stops a thread just anywhere, but at its next safe point (torv/platform/safe_point.h).

struct SECURITY_ATTRIBUTES;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID parameter);
using LPHANDLE = HANDLE*;

constexpr DWORD CREATE_SUSPENDED = 0x00000004;
constexpr DWORD MAXIMUM_SUSPEND_COUNT = 127;
constexpr DWORD STILL_ACTIVE = 259;
constexpr DWORD DUPLICATE_CLOSE_SOURCE = 1;
constexpr DWORD DUPLICATE_SAME_ACCESS = 2;

constexpr int THREAD_PRIORITY_IDLE = -15;
constexpr int THREAD_PRIORITY_LOWEST = -2;
constexpr int THREAD_PRIORITY_BELOW_NORMAL = -1;
constexpr int THREAD_PRIORITY_NORMAL = 0;
constexpr int THREAD_PRIORITY_ABOVE_NORMAL = 1;
constexpr int THREAD_PRIORITY_HIGHEST = 2;
constexpr int THREAD_PRIORITY_TIME_CRITICAL = 15;

constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

/// Begins a thread; with CREATE_SUSPENDED it does nothing until it is resumed. Attributes and stack size have no
/// meaning; the number goes to `id` unless that is null. Null when no thread can be had.
TORV_API HANDLE CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize, LPTHREAD_START_ROUTINE start,
                             LPVOID parameter, DWORD flags, LPDWORD id);
/// Never 0, and never given twice.
TORV_API DWORD GetCurrentThreadId();
inline HANDLE GetCurrentProcess() { return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)); }
/// Stands for the calling thread in every call that takes a handle.
inline HANDLE GetCurrentThread() { return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-2)); }

/// Another handle of the same thread, within this process. Access and inheritance have no meaning.
TORV_API BOOL DuplicateHandle(HANDLE sourceProcess, HANDLE source, HANDLE targetProcess, LPHANDLE target, DWORD access,
                              BOOL inherit, DWORD options);
/// The thread itself runs on, and a wait that has begun goes on too.
TORV_API BOOL CloseHandle(HANDLE handle);

/// Adds to the thread's count and returns the count before, as soon as the thread is at rest: at a safe point or in one
/// of the platform's waits. -1 with the last error at 127, for a thread that is over, and for a handle that is none.
TORV_API DWORD SuspendThread(HANDLE thread);
/// Takes from the count, and lets the thread go on at 0. Returns the count before.
TORV_API DWORD ResumeThread(HANDLE thread);
/// Takes THREAD_PRIORITY_TIME_CRITICAL as real time where the user may have it; else a wish.
TORV_API BOOL SetThreadPriority(HANDLE thread, int priority);
/// STILL_ACTIVE until the thread is over.
TORV_API BOOL GetExitCodeThread(HANDLE thread, LPDWORD code);
/// Waits until the thread is over, its thread-local objects and windows gone: WAIT_OBJECT_0; WAIT_TIMEOUT after that
/// many ms; WAIT_FAILED for a handle that is none.
TORV_API DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);
