/*
 * A graph of audio units, with an output unit at its head. C.
 *
 * Order    new, add nodes, connect, open, set the units up, give callbacks, initialise, start; stop,
 *          uninitialise, close, dispose. Opening, initialising, starting and their opposites have no effect
 *          where there is nothing to do. Nodes, connections and callbacks that are added to an initialised
 *          graph take effect when it is initialised again.
 *
 * Owner    the graph is its maker's, who disposes it; the graph owns its units.
 *
 * Thread   [any], one call at a time takes effect. Inside a slice or a device's cycle no call waits: what
 * might have to is CannotDoInCurrentContext, and changes nothing. There the output unit's own slice may stop
 *          the graph, and connections may be noted, if no other call is under way.
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

/* Stop it, if it runs, and give up nodes and units: when this returns, no callback of the graph runs. Inside
 * a callback CannotDoInCurrentContext, and the graph is as it was. */
KVX_PLATFORM_EXPORT OSStatus DisposeAUGraph(AUGraph graph);

/* A second output unit is OutputNodeErr, a description that no audio unit fits InvalidAudioUnit. Numbers
 * count from 1 and are never used again. In an open graph the node is opened at once. */
KVX_PLATFORM_EXPORT OSStatus AUGraphAddNode(AUGraph graph, const AudioComponentDescription* description,
                                            AUNode* out_node);

/* In the order of adding; an index behind the last is NodeNotFound. */
KVX_PLATFORM_EXPORT OSStatus AUGraphGetNodeCount(AUGraph graph, UInt32* out_count);
KVX_PLATFORM_EXPORT OSStatus AUGraphGetIndNode(AUGraph graph, UInt32 index, AUNode* out_node);

/* What a node is, and its unit: NULL before the graph is open. Either out-pointer may be NULL. */
KVX_PLATFORM_EXPORT OSStatus AUGraphNodeInfo(AUGraph graph, AUNode node,
                                             AudioComponentDescription* out_description, AudioUnit* out_unit);

/* An input takes one connection or one callback. A connection to an input that has either is
 * InvalidConnection, and so is a callback for one that has a connection; a new callback replaces the former
 * one, and one without a procedure removes it. The units receive both, and may refuse them, when the graph is
 * initialised: a missing input or output is kAudioUnitErr_InvalidElement then, a refused format
 * kAudioUnitErr_FormatNotSupported, a cycle of nodes InvalidConnection. */
KVX_PLATFORM_EXPORT OSStatus AUGraphConnectNodeInput(AUGraph graph, AUNode source_node, UInt32 source_output,
                                                     AUNode dest_node, UInt32 dest_input);
KVX_PLATFORM_EXPORT OSStatus AUGraphSetNodeInputCallback(AUGraph graph, AUNode dest_node, UInt32 dest_input,
                                                         const AURenderCallbackStruct* callback);

/* Open makes the units, without their resources, or none of them. Close undoes it; nodes and connections
 * stay. */
KVX_PLATFORM_EXPORT OSStatus AUGraphOpen(AUGraph graph);
KVX_PLATFORM_EXPORT OSStatus AUGraphClose(AUGraph graph);

/* Make the connections, from the sources to the output unit, so that formats travel along them, and
 * initialise the units that take part in a connection or callback. The first error leaves none of them
 * initialised. A graph that is not open, and a start of one that is not initialised, are
 * kAudioUnitErr_Uninitialized; to uninitialise one that is not open is badComponentInstance. */
KVX_PLATFORM_EXPORT OSStatus AUGraphInitialize(AUGraph graph);
KVX_PLATFORM_EXPORT OSStatus AUGraphUninitialize(AUGraph graph);

/* Start and stop the output unit. Neither counts: once started, one stop is enough. After a stop no callback
 * runs, but inside one, where its slice is the last. Without an output node a start is OutputNodeErr. */
KVX_PLATFORM_EXPORT OSStatus AUGraphStart(AUGraph graph);
KVX_PLATFORM_EXPORT OSStatus AUGraphStop(AUGraph graph);

/* Whether it runs is what the output unit says. */
KVX_PLATFORM_EXPORT OSStatus AUGraphIsOpen(AUGraph graph, Boolean* out_is_open);
KVX_PLATFORM_EXPORT OSStatus AUGraphIsInitialized(AUGraph graph, Boolean* out_is_initialized);
KVX_PLATFORM_EXPORT OSStatus AUGraphIsRunning(AUGraph graph, Boolean* out_is_running);

KVX_PLATFORM_END

#endif
