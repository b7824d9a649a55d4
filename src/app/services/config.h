#ifndef APP_CONFIG_H
#define APP_CONFIG_H

class String;

// Numbers of the engine's settings that this library asks for. The first digit tells the kind: 1 an integer,
// 2 a text. They are part of the interface with the engine.
enum Config_Setting : int {
    CONFIG_TIMEOUT = 0x1000007,   // seconds, for a whole run and for a network operation; 0 waits for ever
    CONFIG_LOCK_WAIT = 0x100000b, // milliseconds between two attempts to take a lock
    CONFIG_CERTIFICATE_CHECKS = 0x1000018, // bits: Config_Certificate_Check
    CONFIG_POST_TIMEOUT = 0x1000026,       // seconds for reading posted data; 0 waits for ever
    CONFIG_SERVER_NAME = 0x1000029,   // server name indication: 0 never, 1 always, other by library version
    CONFIG_SOCKS_VERSION = 0x1000038, // 4 or 5
    CONFIG_SOCKS_HOST = 0x2000039,    // empty: no proxy
    CONFIG_SOCKS_PORT = 0x100003a,
    CONFIG_SOCKS_USER = 0x200003b,
    CONFIG_SOCKS_PASSWORD = 0x200003c
};

// Bits of CONFIG_CERTIFICATE_CHECKS. Their senses differ: one turns a check off, the other turns one on.
enum Config_Certificate_Check : int {
    CERTIFICATE_HOSTNAME_UNCHECKED = 0x2000,
    CERTIFICATE_ADDRESS_CHECKED = 0x4000
};

// What the library asks of an engine's configuration. The engine implements it and hands it out through
// TarnApplication::config(), which is null in programs without one.
class Config {
  public:
    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~Config() = default;
    // The value of an integer setting, 0 when it isn't set.
    virtual int Integer(Config_Setting setting) const = 0;
    // The value of a text setting, unassigned or empty when it isn't set. Owned by the configuration.
    virtual const String& Text(Config_Setting setting) const = 0;
};

#endif
