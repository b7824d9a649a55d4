#ifndef APP_TARN_APPLICATION_H
#define APP_TARN_APPLICATION_H

#include "core/list.h"
#include "core/string.h"
#include "files/path_type.h"

#include <ctime>
#include <memory>

class CommerceManager;
class Config;
class DatabaseManager;
class ExternalLibraryManager;
class FileManager;
class LinkBuffer;
class NetworkManager;
class Output;
class SystemLibraryManager;
class TarnVM;
struct LogParameter;
struct mpd_context_t;
struct mpd_t;

// The decimal context of the whole process, IEEE decimal64; main() sets it up before anything else.
extern mpd_context_t Tarn_MPD_Context;

// One entry of a log filter: an event's name and the range of levels that it lets through.
struct LogFilterEntry {
    LogFilterEntry(const char* name, int name_length, int low, int high);
    virtual ~LogFilterEntry();
    LogFilterEntry(const LogFilterEntry&) = delete;
    LogFilterEntry& operator=(const LogFilterEntry&) = delete;

    std::unique_ptr<char[]> name; // NUL-terminated
    int name_length;
    int low;
    int high;
};

// The services and settings that a program offers to the language: the abstract root of every application
// class. One object serves a program for its whole life; the services that it hands out stay its own. A
// service that a program doesn't have is null.
//
// The number conversions and text encoders stand here because they belong to the process and its decimal
// context; they touch no object. Their results are allocated with new[] and belong to the caller
// (String::assign_nocopy takes them); the out pointers for the text's length and the size of the array may be
// null.
class TarnApplication {
  public:
    TarnApplication();
    TarnApplication(const TarnApplication&) = delete;
    TarnApplication& operator=(const TarnApplication&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~TarnApplication();
    virtual NetworkManager* networkmanager() = 0;
    virtual FileManager* filemanager() = 0;
    virtual ExternalLibraryManager* librarymanager() = 0;
    virtual CommerceManager* commercemanager() = 0;
    virtual DatabaseManager* databasemanager() = 0;
    virtual SystemLibraryManager* systemlibrarymanager() = 0;
    virtual Config* config() = 0;
    // The program's name without its directory, and the name of this host.
    virtual const char* basename() = 0;
    virtual const char* hostname() = 0;
    // The text of the system's last error.
    virtual const char* lasterror() = 0;
    virtual Output* output() = 0;
    // Puts another output in place and returns the earlier one; the output in place is the application's.
    virtual Output* SetOutput(Output* output) = 0;
    // Both answer text made with new[], or null.
    virtual char* Crypt(const char* text, int length, const char* salt, int* result_length,
                        int* result_size) = 0;
    virtual char* MakeSessionID(int* length) = 0;
    // Start the deadlines anew from the engine's settings; without a setting there is none.
    virtual void ResetGlobalTimeout();
    virtual void ResetPOSTTimeout();
    virtual void ClearPOSTTimeout();
    // Whether the global deadline was found past by Heartbeat.
    virtual bool cancelled();
    // What identifies a holder of lock files, and the age in seconds at which another host's lock is stale (0
    // never).
    virtual unsigned processid() = 0;
    virtual unsigned threadid() = 0;
    virtual const char* lockhostname() = 0;
    virtual int lockexpiration() = 0;
    // Write a text to the error output as it is; a length of -1 means up to NUL. All answer false and end in
    // OutputError.
    virtual bool Error(const String& text);
    virtual bool Error(const char* text);
    virtual bool Error(const char* text, int length);
    virtual bool OutputError(const char* text, int length) = 0;
    virtual void Sleep(int seconds) = 0;
    virtual int GetUserID() = 0;
    // Answers the state of the task; 3 where there are none.
    virtual int BeginAsynchronousTask(TarnVM* vm, unsigned flags) = 0;
    virtual void AsynchronousSleep(long seconds, Tarn_PathType type, const char* path) = 0;
    // Counts the call, and notes deadlines that have passed at the time given.
    virtual void Heartbeat(long now);
    // Seconds to the global deadline: -1 without one, 0 past it.
    virtual long TimeRemaining();
    virtual String& language();
    virtual String& defaultlanguage();
    virtual String& defaultdatabase();
    virtual String& charset();
    // Counters raised by each change, so that a reader sees whether what it keeps is stale.
    virtual int languagecount();
    virtual int defaultlanguagecount();
    virtual int defaultdatabasecount();
    virtual int charsetcount();
    virtual const char* GetCharacterSet();
    virtual bool CharacterSetIsUTF8();
    virtual void SetLanguage(const char* text, int length);
    virtual void SetDefaultLanguage(const char* text, int length);
    virtual void SetDefaultDatabase(const char* text, int length);
    virtual void SetCharacterSet(const char* text, int length);
    // Whether TLS can be used, initialising it at need; false puts the reason into the text.
    virtual bool SSL_Available(String* error);
    virtual bool SSL_Initialize(String* error) = 0;
    // A function of the TLS library by its name, null when it has none.
    virtual void* SSL_GetFunction(const char* name) = 0;
    // Replaces the log filters by a list like "name:1-3, !other".
    virtual void ParseLogFilter(const char* text);
    virtual void Log(unsigned event, LogParameter* parameters) = 0;
    // The name of a log event bit, "Unknown" for what is none.
    virtual const char* Log_Description(unsigned event);
    virtual void Notify_InputError(const String& text) = 0;
    virtual void Notify_FatalError(const String& text) = 0;
    virtual void Notify_TimeoutError(const String& text) = 0;
    virtual void Notify_RuntimeError(int code, const String& text, bool display) = 0;
    virtual void ResolveErrorSyslog() = 0;
    virtual void Notify_Syslog(const String& text) = 0;
    virtual const char* process_name() = 0;
    virtual void SetProcessName(const char* text, int length) = 0;
    // The path that a script's path stands for; false puts the reason into error.
    virtual bool ResolvePath(const char* path, String& result, Tarn_PathType type, String* error) = 0;

    // What SSL_Initialize set up, null before.
    void* ssl_state() const { return ssl_state_; }

    // Number conversions. Those from text set *error, which may be null, to 0, or to 1 where they fail and
    // answer 0. A length of -1 means up to NUL; size counts the readable bytes at the pointer and isn't
    // looked at when the length is -1. Where a target is null a new decimal is made. Texts are plain, without
    // an exponent.
    static char* itos(int value, int* length, int* size);
    static char* dtos(double value, int* length, int* size);
    static char* mpdtos(mpd_t* value, int* length, int* size);
    // Decimal, or hexadecimal behind 0x. Too large a number wraps at 32 bits without an error.
    static int stoi(const char* text, int length, int* error);
    // What strtod reads, if that is the whole text. Of too large a number the answer is infinity, with the
    // error set; with a length of -1 also of an infinity spelled out while errno says ERANGE from before.
    static double stod(const char* text, int length, int size, int* error);
    // Rounds to the context's 16 digits; overflow is infinity. Neither is an error.
    static mpd_t* stompd(mpd_t* target, const char* text, int length, int size, int* error);
    static mpd_t* itompd(mpd_t* target, int value);
    static mpd_t* dtompd(mpd_t* target, double value);
    static mpd_t* mpdtompd(mpd_t* target, mpd_t* source);
    // Cuts off the fraction; 0 of what is no number, INT_MAX and -INT_MAX of the infinities.
    static int mpdtoi(mpd_t* value);
    static double mpdtod(mpd_t* value);
    // Digits in all and behind the point of a decimal's plain text; 0 and 0 for what is no finite number.
    static void mpdsize(mpd_t* value, int* digits, int* fraction);

    // Text encoders. A length of -1 means up to NUL; of any other length below 1, and in StripNULLs of -1
    // too, the result is empty.
    //
    // To the form of URLs: space becomes +; letters, digits and * - . @ _ stay; any other byte becomes % and
    // two upper-case hexadecimal digits. Back again a % without two such digits, of either case, stays.
    static char* EncodeAttribute(const char* text, int length, int* result_length, int* result_size);
    static char* DecodeAttribute(const char* text, int length, int* result_length, int* result_size);
    // The characters " & < > ( ) to entities, and those six entities back, their names in any case. An entity
    // ends with its ; or with the text.
    static char* EncodeEntities(const char* text, int length, int* result_length, int* result_size);
    static String EncodeEntities(const String& text);
    static char* DecodeEntities(const char* text, int length, int* result_length, int* result_size);
    static char* StripNULLs(const char* text, int length, int* result_length, int* result_size);
    // The body of a script's string: \b \t \n \f \r, a backslash ahead of " / and \; space $ + , - . : @ _,
    // letters and digits stay; any other byte becomes \u00 and two digits. With UTF-8 as the application's
    // character set, sequences of two to four bytes become one or two \u with four digits instead.
    //
    // The first form appends to the buffer and returns it; a null buffer makes a new one, the caller's.
    static LinkBuffer* EncodeJavaScriptString(TarnApplication* application, const char* text, int length,
                                              LinkBuffer* buffer);
    char* EncodeJavaScriptString(const char* text, int length, int* result_length, int* result_size);

  protected:
    // The order of the fields is part of the binary interface.
    void* ssl_library = nullptr;
    void* ssl_state_ = nullptr;
    int heartbeats = 0;
    int cancelled_ = 0;
    int post_timed_out = 0;
    time_t global_deadline = 0; // 0: none
    time_t post_deadline = 0;   // 0: none
    List<LogFilterEntry> log_include{1};
    List<LogFilterEntry> log_exclude{1};
    String language_ = "en-US";
    int language_changes = 1;
    String default_language = "en-US";
    int default_language_changes = 1;
    String default_database = "xbase3";
    int default_database_changes = 1;
    String charset_ = "utf-8";
    int charset_changes = 1;
    bool charset_is_utf8 = true;
};

#endif
