// The bytes of host strings, as stored or converted.
#pragma once

#include "plugin/records.h"

// Fills `record` with the string's bytes in `encoding` (kTextEncodingUnknown: as stored). True when it was
// filled; then the record must be given to REALDisposeStringData. A host without "PluginGetStringData" is
// served by a fallback, which puts four zero bytes after the text.
bool REALGetStringData(REALstring string, uint32_t encoding, REALstringData* record);
void REALDisposeStringData(REALstringData* record);

// A string's text where it lies in the host's string record: for hosts up to 2013.0, which have no other
// way to the stored bytes. Valid while the string is held.
struct StoredText {
    const char* data;
    int32_t length;  // bytes
};
StoredText stored_text(REALstring string);

// One host string, whose Mac OS Roman bytes are made on demand and live as long as the helper. A string
// that cannot be read or converted has no bytes. Two steps, because only the second one can fail: until
// ConvertMacRoman() has made the view, length() is -1, and failed() tells a failure from an empty text.
class rbText {
 public:
    enum Reading {
        kConvert,
        kTakeStoredBytes,  // the caller knows that they are Mac OS Roman already
    };
    // Takes over a reference to the string from the caller; nil means no text.
    rbText(REALstring string, Reading reading) : string_(string), reading_(reading) {}
    ~rbText();
    rbText(const rbText&) = delete;
    rbText& operator=(const rbText&) = delete;

    // Makes the Mac OS Roman view: afterwards length() is 0 or more and data() points to that many bytes,
    // followed by a zero byte unless they are the stored ones.
    void ConvertMacRoman();

    const uint8_t* data() const { return data_; }
    int32_t length() const { return length_; }  // bytes; -1 until the view is made
    bool failed() const { return failed_; }

 private:
    void view(const void* data, int32_t length);
    void read_data(uint32_t encoding);
    void read_record(REALstring string);
    void terminate();

    REALstring string_;
    Reading reading_;
    REALstring converted_ = nullptr;
    int32_t length_ = -1;
    const uint8_t* data_ = nullptr;
    void* copy_ = nullptr;
    REALstringData stringData_ = {};
    bool stringDataHeld_ = false;
    bool failed_ = false;
};
