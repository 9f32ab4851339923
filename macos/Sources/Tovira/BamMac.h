#pragma once
// Main thread. Apple only: what the About window's button does.

#import <AppKit/AppKit.h>

// One shared instance; a button holds its target weakly.
@interface TVBam : NSObject
@property(class, nonatomic, readonly) TVBam* chung;
- (void)huongDan:(id)sender;
@end
