#pragma once
// Any thread. Apple only: text between this program and the system.

#import <Foundation/Foundation.h>

#include <string>

namespace tovira {

// Empty where the bytes are not UTF-8.
inline NSString* chuMac(const std::string& chu) {
    NSString* ra = [[NSString alloc] initWithBytes:chu.data()
                                            length:chu.size()
                                          encoding:NSUTF8StringEncoding];
    return ra != nil ? ra : @"";
}

// A menu item's key; empty for 0.
inline NSString* chuMac(char phim) { return phim == 0 ? @"" : [NSString stringWithFormat:@"%c", phim]; }

// Empty for nil and for a text that has no UTF-8 form.
inline std::string chuCpp(NSString* chu) {
    NSData* byte = [chu dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:NO];
    return byte == nil ? std::string() : std::string(static_cast<const char*>(byte.bytes), byte.length);
}

}  // namespace tovira
