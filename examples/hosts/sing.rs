// Sings a song into a wave file, from Rust.    sing SONG WAVE
use std::env;
use std::ffi::{CStr, CString};
use std::os::raw::{c_char, c_int, c_void};
use std::process::ExitCode;
use std::ptr::{null, null_mut};

type Handle = *mut c_void;

#[link(name = "torvc")]
extern "C" {
    fn torv_error_text() -> *const c_char;
    fn torv_song_open(path: *const c_char, encoding: *const c_char, song: *mut Handle) -> c_int;
    fn torv_song_free(song: Handle) -> c_int;
    fn torv_databases_open(databases: *mut Handle) -> c_int;
    fn torv_databases_free(databases: Handle) -> c_int;
    fn torv_score_make(song: Handle, databases: Handle, options: *const c_void, score: *mut Handle) -> c_int;
    fn torv_score_free(score: Handle) -> c_int;
    fn torv_sing_file(score: Handle, options: *const c_void, path: *const c_char, saved: *mut c_void) -> c_int;
}

/// A status as a result, with the library's own words.
fn checked(status: c_int) -> Result<(), String> {
    match status {
        0 => Ok(()),
        _ => Err(unsafe { CStr::from_ptr(torv_error_text()) }.to_string_lossy().into_owned()),
    }
}

/// A handle, given back when this goes.
struct Owned(Handle, unsafe extern "C" fn(Handle) -> c_int);

impl Owned {
    fn new(free: unsafe extern "C" fn(Handle) -> c_int, make: impl FnOnce(*mut Handle) -> c_int) -> Result<Owned, String> {
        let mut owned = Owned(null_mut(), free);
        checked(make(&mut owned.0)).map(|()| owned)
    }
}

impl Drop for Owned {
    fn drop(&mut self) {
        unsafe { (self.1)(self.0) };
    }
}

fn sing(song: &str, wave: &str) -> Result<(), String> {
    let text = |path: &str| CString::new(path).map_err(|_| format!("{path:?} is no path"));
    let (from, to) = (text(song)?, text(wave)?);
    let song = Owned::new(torv_song_free, |song| unsafe { torv_song_open(from.as_ptr(), null(), song) })?;
    let databases = Owned::new(torv_databases_free, |databases| unsafe { torv_databases_open(databases) })?;
    let score = Owned::new(torv_score_free, |score| unsafe { torv_score_make(song.0, databases.0, null(), score) })?;
    checked(unsafe { torv_sing_file(score.0, null(), to.as_ptr(), null_mut()) })
}

fn main() -> ExitCode {
    let arguments: Vec<String> = env::args().collect();
    if arguments.len() != 3 {
        eprintln!("sing SONG WAVE");
        return ExitCode::from(2);
    }
    match sing(&arguments[1], &arguments[2]) {
        Ok(()) => ExitCode::SUCCESS,
        Err(text) => {
            eprintln!("sing: {text}");
            ExitCode::FAILURE
        }
    }
}
