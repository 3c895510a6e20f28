/*
 * A graph of audio units, with an output unit at its head. C.
 *
 * Order    new, add nodes, connect, open, set the units up, give callbacks, initialise, start; stop,
 *          uninitialise, close, dispose. Nodes and connections may also come later: on an initialised graph
 *          they take effect with AUGraphUpdate.
 *
 * Owner    the graph is its maker's, who disposes it; the graph owns its units.
 *
 * Thread   [any], one call at a time takes effect; inside a render callback a call that would have to wait is
 *          CannotDoInCurrentContext.
 *
 * Errors   a NULL, disposed or made-up graph, or a missing out-pointer, is -50 (paramErr); the rest are
 * below.
 */
#ifndef AUDIOTOOLBOX_AUGRAPH_H
#define AUDIOTOOLBOX_AUGRAPH_H

#include <AudioUnit/AudioUnit.h>

KVX_PLATFORM_BEGIN

typedef struct OpaqueAUGraph* AUGraph;
typedef SInt32 AUNode;

enum {
    kAUGraphErr_NodeNotFound = -10860,
    kAUGraphErr_InvalidConnection = -10861,
    kAUGraphErr_OutputNodeErr = -10862,
    kAUGraphErr_CannotDoInCurrentContext = -10863,
    kAUGraphErr_InvalidAudioUnit = -10864
};

KVX_PLATFORM_EXPORT OSStatus NewAUGraph(AUGraph* out_graph);

/* Stop it, if it runs, and give up nodes and units: when this returns, no callback of the graph runs. */
KVX_PLATFORM_EXPORT OSStatus DisposeAUGraph(AUGraph graph);

/* A second output unit is OutputNodeErr, a description that no component fits InvalidAudioUnit. */
KVX_PLATFORM_EXPORT OSStatus AUGraphAddNode(AUGraph graph, const AudioComponentDescription* description,
                                            AUNode* out_node);
KVX_PLATFORM_EXPORT OSStatus AUGraphRemoveNode(AUGraph graph, AUNode node);
KVX_PLATFORM_EXPORT OSStatus AUGraphGetNodeCount(AUGraph graph, UInt32* out_count);
KVX_PLATFORM_EXPORT OSStatus AUGraphGetIndNode(AUGraph graph, UInt32 index, AUNode* out_node);

/* What a node is, and its unit: NULL before the graph is open. Either out-pointer may be NULL. */
KVX_PLATFORM_EXPORT OSStatus AUGraphNodeInfo(AUGraph graph, AUNode node,
                                             AudioComponentDescription* out_description, AudioUnit* out_unit);

/* An input takes one connection or one callback; a connection to an input that has one already is
 * InvalidConnection, a new callback takes the former one's place. The units hear of a connection, and may
 * refuse its format, when the graph is initialised or updated. */
KVX_PLATFORM_EXPORT OSStatus AUGraphConnectNodeInput(AUGraph graph, AUNode source_node, UInt32 source_output,
                                                     AUNode dest_node, UInt32 dest_input);
KVX_PLATFORM_EXPORT OSStatus AUGraphSetNodeInputCallback(AUGraph graph, AUNode dest_node, UInt32 dest_input,
                                                         const AURenderCallbackStruct* callback);
KVX_PLATFORM_EXPORT OSStatus AUGraphDisconnectNodeInput(AUGraph graph, AUNode dest_node, UInt32 dest_input);
KVX_PLATFORM_EXPORT OSStatus AUGraphClearConnections(AUGraph graph);

/* Carry out what was changed since the graph was initialised. It ends at the first error and keeps the rest
 * for the next call. `out_is_updated` may be NULL. */
KVX_PLATFORM_EXPORT OSStatus AUGraphUpdate(AUGraph graph, Boolean* out_is_updated);

/* Open makes the units, without their resources. Close undoes it. */
KVX_PLATFORM_EXPORT OSStatus AUGraphOpen(AUGraph graph);
KVX_PLATFORM_EXPORT OSStatus AUGraphClose(AUGraph graph);

/* Initialise the units that take part in a connection or callback. A graph that is not open, and a start of
 * one that is not initialised, are kAudioUnitErr_Uninitialized. */
KVX_PLATFORM_EXPORT OSStatus AUGraphInitialize(AUGraph graph);
KVX_PLATFORM_EXPORT OSStatus AUGraphUninitialize(AUGraph graph);

/* Start and stop the output unit. Neither counts: once started, one stop is enough. */
KVX_PLATFORM_EXPORT OSStatus AUGraphStart(AUGraph graph);
KVX_PLATFORM_EXPORT OSStatus AUGraphStop(AUGraph graph);

KVX_PLATFORM_EXPORT OSStatus AUGraphIsOpen(AUGraph graph, Boolean* out_is_open);
KVX_PLATFORM_EXPORT OSStatus AUGraphIsInitialized(AUGraph graph, Boolean* out_is_initialized);
KVX_PLATFORM_EXPORT OSStatus AUGraphIsRunning(AUGraph graph, Boolean* out_is_running);

/* Have a function called before and after each slice of the output unit. */
KVX_PLATFORM_EXPORT OSStatus AUGraphAddRenderNotify(AUGraph graph, AURenderCallback notify, void* context);
KVX_PLATFORM_EXPORT OSStatus AUGraphRemoveRenderNotify(AUGraph graph, AURenderCallback notify, void* context);

KVX_PLATFORM_END

#endif
