//! The crate memchr with a C interface. A needle is prepared at each call, as the members do.

fn index(found: Option<usize>) -> usize {
    found.unwrap_or(usize::MAX)
}

#[no_mangle]
pub unsafe extern "C" fn memchr_crate_byte(data: *const u8, n: usize, value: u8) -> usize {
    index(memchr::memchr(value, std::slice::from_raw_parts(data, n)))
}

#[no_mangle]
pub unsafe extern "C" fn memchr_crate_bytes(
    haystack: *const u8,
    n: usize,
    needle: *const u8,
    m: usize,
) -> usize {
    let haystack = std::slice::from_raw_parts(haystack, n);
    let needle = std::slice::from_raw_parts(needle, m);
    index(memchr::memmem::find(haystack, needle))
}
