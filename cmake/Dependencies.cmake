# Every library from outside, found once, with the reason for it. The packages that bring them are
# listed in packages.txt.

find_package(Threads REQUIRED)                              # std::thread, std::jthread
find_package(ICU 72 REQUIRED COMPONENTS i18n uc data)       # Unicode text, calendars, regex, collation
find_package(SQLite3 3.40 REQUIRED)                         # the library file and the search index
find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)        # digests, encryption, secure random
find_package(Boost 1.81 REQUIRED COMPONENTS json)           # JSON in and out, keys in order

find_package(PkgConfig REQUIRED)
pkg_check_modules(MD4C REQUIRED IMPORTED_TARGET md4c)       # reads Markdown; target PkgConfig::MD4C
pkg_check_modules(Hunspell REQUIRED IMPORTED_TARGET hunspell)    # spelling; target PkgConfig::Hunspell
pkg_check_modules(Secret REQUIRED IMPORTED_TARGET libsecret-1)   # the keyring; target PkgConfig::Secret

find_package(EXPAT 2.5 REQUIRED)                            # XML of other programs; EXPAT::EXPAT
find_package(ZLIB REQUIRED)                                 # their compressed bodies; ZLIB::ZLIB
find_package(CURL 7.88 REQUIRED)                            # HTTP; CURL::libcurl
find_package(Poco 1.11 REQUIRED COMPONENTS Net NetSSL)       # the service's sockets; Poco::Net
find_package(Qt6 6.4 REQUIRED                               # the window, met in app/ only
    COMPONENTS Widgets Svg PrintSupport DBus)

if(BUILD_TESTING)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Test Network)  # the window's tests: keys, clicks, others
    find_package(GTest REQUIRED)                            # tests; GTest::gtest_main, GTest::gmock
    include(GoogleTest)
endif()

