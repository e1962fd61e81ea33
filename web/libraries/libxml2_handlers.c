/* The standard handlers of libxml2, which make a tree. The library gives handlers of its own, so these
 * are never called; the parser's tables name them all the same, and they would bring the whole parser
 * of XML with them. */
#include <stddef.h>

#include <libxml/SAX2.h>

const xmlChar *xmlSAX2GetPublicId(void *ctx) { return NULL; }
const xmlChar *xmlSAX2GetSystemId(void *ctx) { return NULL; }
void xmlSAX2SetDocumentLocator(void *ctx, xmlSAXLocatorPtr loc) {}
int xmlSAX2GetLineNumber(void *ctx) { return 0; }
int xmlSAX2GetColumnNumber(void *ctx) { return 0; }
int xmlSAX2IsStandalone(void *ctx) { return 0; }
int xmlSAX2HasInternalSubset(void *ctx) { return 0; }
int xmlSAX2HasExternalSubset(void *ctx) { return 0; }
void xmlSAX2InternalSubset(void *ctx, const xmlChar *name, const xmlChar *ExternalID, const xmlChar *SystemID) {}
void xmlSAX2ExternalSubset(void *ctx, const xmlChar *name, const xmlChar *ExternalID, const xmlChar *SystemID) {}
xmlEntityPtr xmlSAX2GetEntity(void *ctx, const xmlChar *name) { return NULL; }
xmlEntityPtr xmlSAX2GetParameterEntity(void *ctx, const xmlChar *name) { return NULL; }
xmlParserInputPtr xmlSAX2ResolveEntity(void *ctx, const xmlChar *publicId, const xmlChar *systemId) { return NULL; }
void xmlSAX2EntityDecl(void *ctx, const xmlChar *name, int type, const xmlChar *publicId, const xmlChar *systemId, xmlChar *content) {}
void xmlSAX2AttributeDecl(void *ctx, const xmlChar *elem, const xmlChar *fullname, int type, int def, const xmlChar *defaultValue, xmlEnumerationPtr tree) {}
void xmlSAX2ElementDecl(void *ctx, const xmlChar *name, int type, xmlElementContentPtr content) {}
void xmlSAX2NotationDecl(void *ctx, const xmlChar *name, const xmlChar *publicId, const xmlChar *systemId) {}
void xmlSAX2UnparsedEntityDecl(void *ctx, const xmlChar *name, const xmlChar *publicId, const xmlChar *systemId, const xmlChar *notationName) {}
void xmlSAX2StartDocument(void *ctx) {}
void xmlSAX2EndDocument(void *ctx) {}
void xmlSAX2StartElement(void *ctx, const xmlChar *fullname, const xmlChar **atts) {}
void xmlSAX2EndElement(void *ctx, const xmlChar *name) {}
void xmlSAX2Reference(void *ctx, const xmlChar *name) {}
void xmlSAX2Characters(void *ctx, const xmlChar *ch, int len) {}
void xmlSAX2IgnorableWhitespace(void *ctx, const xmlChar *ch, int len) {}
void xmlSAX2ProcessingInstruction(void *ctx, const xmlChar *target, const xmlChar *data) {}
void xmlSAX2Comment(void *ctx, const xmlChar *value) {}
void xmlSAX2CDataBlock(void *ctx, const xmlChar *value, int len) {}
void htmlDefaultSAXHandlerInit(void) {}
void xmlDefaultSAXHandlerInit(void) {}
