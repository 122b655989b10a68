// Writes the two archives with the keyed archiver of GNUstep, as the previous generation did with its own.
//
// usage: write_archives SETTINGS.json CAMERAS ALBUMS
#import <Foundation/Foundation.h>

@interface OldRecord : NSObject <NSCoding> {
    NSDictionary *fields;
}
+ (id)recordWithFields:(NSDictionary *)someFields;
@end

@implementation OldRecord

+ (id)recordWithFields:(NSDictionary *)someFields
{
    OldRecord *record = [[self new] autorelease];
    record->fields = [someFields retain];
    return record;
}

- (void)dealloc
{
    [fields release];
    [super dealloc];
}

- (id)initWithCoder:(NSCoder *)coder
{
    [self release];
    return nil;
}

- (void)encodeWithCoder:(NSCoder *)coder
{
    NSEnumerator *keys = [fields keyEnumerator];
    NSString *key;
    while ((key = [keys nextObject])) {
        id value = [fields objectForKey:key];
        if ([key isEqual:@"currentVideoNorm"])
            [coder encodeInt:[value intValue] forKey:key];
        else if ([key isEqual:@"currentResolution"])
            [coder encodeInt64:[value longLongValue] forKey:key];
        else if ([key isEqual:@"value"])
            [coder encodeDouble:[value doubleValue] forKey:key];
        else
            [coder encodeObject:value forKey:key];
    }
}

@end

/// The same entries as objects of a class of our own.
static NSDictionary *records(NSDictionary *entries)
{
    NSMutableDictionary *result = [NSMutableDictionary dictionary];
    NSEnumerator *keys = [entries keyEnumerator];
    NSString *key;
    while ((key = [keys nextObject])) {
        NSMutableDictionary *fields = [NSMutableDictionary dictionaryWithDictionary:[entries objectForKey:key]];
        if ([fields objectForKey:@"cp"])
            [fields setObject:records([fields objectForKey:@"cp"]) forKey:@"cp"];
        [result setObject:[OldRecord recordWithFields:fields] forKey:key];
    }
    return result;
}

static BOOL write(NSDictionary *root, const char *path)
{
    return [[NSKeyedArchiver archivedDataWithRootObject:root] writeToFile:[NSString stringWithUTF8String:path]
                                                               atomically:NO];
}

int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    if (argc != 4)
        return 2;
    NSData *json = [NSData dataWithContentsOfFile:[NSString stringWithUTF8String:argv[1]]];
    NSDictionary *settings = [NSJSONSerialization JSONObjectWithData:json options:0 error:NULL];
    NSMutableDictionary *cameras = [NSMutableDictionary dictionaryWithDictionary:[settings objectForKey:@"cameras"]];
    [cameras setObject:records([cameras objectForKey:@"productsByName"]) forKey:@"productsByName"];
    NSMutableArray *albums = [NSMutableArray array];
    NSEnumerator *fields = [[[settings objectForKey:@"albums"] objectForKey:@"albums"] objectEnumerator];
    NSDictionary *album;
    while ((album = [fields nextObject]))
        [albums addObject:[OldRecord recordWithFields:album]];
    const BOOL written = write(cameras, argv[2]) && write([NSDictionary dictionaryWithObject:albums forKey:@"albums"],
                                                          argv[3]);
    [pool release];
    return written ? 0 : 1;
}
