/*
 * Graphs of audio units with one output unit. C.
 *
 * Order    new, add nodes, connect, open, set properties of the units, set callbacks, initialise, start;
 *          stop, uninitialise, close, dispose. Nodes, connections and callbacks added to an initialised
 *          graph take effect at its next initialisation. A call for a state that the graph is in already
 *          returns noErr without effect.
 * Owner    the caller of NewAUGraph disposes the graph. The graph owns its units.
 * Errors   of every function: paramErr (-50): a NULL, disposed or unknown graph, or a required pointer is
 *          NULL. memFullErr (-108): no memory. kAUGraphErr_NodeNotFound: no such node. A refused call
 *          changes nothing.
 *          kAUGraphErr_CannotDoInCurrentContext: called in a slice or I/O cycle, and the call would have
 *          to wait: always for dispose, open, close, initialise and uninitialise; for start and stop,
 *          unless in a slice of the graph's output unit; otherwise while another call on the graph is in
 *          progress.
 * Calls on one graph take effect one after another.
 * All functions: [any].
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

/*
 * Make an empty graph.
 * Owner    the caller disposes *out_graph.
 * Errors   memFullErr: also 4,096 live graphs. *out_graph is NULL.
 */
KVX_PLATFORM_EXPORT OSStatus NewAUGraph(AUGraph* out_graph);

/*
 * Stop, uninitialise, close and free a graph. When it returns, no callback of the graph runs.
 * Errors   as at the top.
 */
KVX_PLATFORM_EXPORT OSStatus DisposeAUGraph(AUGraph graph);

/*
 * Add a node for the first audio unit that matches a description. In an open graph the unit is opened.
 * Shape    a zero field of the description matches anything. Node numbers count from 1 and are not used
 *          again.
 * Errors   kAUGraphErr_InvalidAudioUnit: no audio unit matches. kAUGraphErr_OutputNodeErr: a second
 *          output unit. Any status of opening the unit.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphAddNode(AUGraph graph, const AudioComponentDescription* description,
                                            AUNode* out_node);

/* Get the number of nodes. */
KVX_PLATFORM_EXPORT OSStatus AUGraphGetNodeCount(AUGraph graph, UInt32* out_count);

/*
 * Get the number of a node by index, from 0, in the order of adding.
 * Errors   kAUGraphErr_NodeNotFound: index is not below the count.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphGetIndNode(AUGraph graph, UInt32 index, AUNode* out_node);

/*
 * Get a node's description and unit. Either out-pointer may be NULL.
 * Shape    the description is the component's own. The unit is NULL until the graph is open.
 * Owner    the unit stays the graph's, until the graph is closed.
 * Errors   as at the top.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphNodeInfo(AUGraph graph, AUNode node,
                                             AudioComponentDescription* out_description, AudioUnit* out_unit);

/*
 * Connect an output element of a node to an input element of another. Initialisation makes the
 * connection; the input takes over the format of the output.
 * Errors   kAUGraphErr_InvalidConnection: the input has a connection or callback.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphConnectNodeInput(AUGraph graph, AUNode source_node, UInt32 source_output,
                                                     AUNode dest_node, UInt32 dest_input);

/*
 * Set the render callback of an input element. It replaces a former callback; with inputProc NULL the
 * callback is removed. Initialisation passes it to the unit.
 * Owner    the record is copied; its context stays the caller's.
 * Errors   kAUGraphErr_InvalidConnection: the input has a connection.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphSetNodeInputCallback(AUGraph graph, AUNode dest_node, UInt32 dest_input,
                                                         const AURenderCallbackStruct* callback);

/*
 * Open the units of all nodes.
 * Errors   any status of opening a unit; no unit is open then.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphOpen(AUGraph graph);

/*
 * Close all units; stops and uninitialises first. Nodes and connections stay.
 * Errors   as at the top.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphClose(AUGraph graph);

/*
 * Make all connections, from the sources to the output unit, and initialise the units that have one.
 * Errors   all units are uninitialised then. kAudioUnitErr_Uninitialized: the graph is not open.
 *          kAUGraphErr_InvalidConnection: the connections form a cycle. kAudioUnitErr_InvalidElement: a
 *          unit has no such input or output. kAudioUnitErr_FormatNotSupported: a unit refuses the format
 *          of its source. badComponentInstance: the caller has closed a unit. Any status of a unit's
 *          initialisation.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphInitialize(AUGraph graph);

/*
 * Uninitialise all units; stops first.
 * Errors   badComponentInstance: the graph is not open.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphUninitialize(AUGraph graph);

/*
 * Start the output unit. Starts are not counted.
 * Errors   kAudioUnitErr_Uninitialized: the graph is not initialised, or the output unit has no input.
 *          kAUGraphErr_OutputNodeErr: no output unit. Any status of AudioOutputUnitStart.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphStart(AUGraph graph);

/*
 * Stop the output unit. When it returns, no callback of the graph runs; inside a callback, the present
 * slice is the last.
 * Errors   as at the top.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphStop(AUGraph graph);

/* Get whether the units are open. */
KVX_PLATFORM_EXPORT OSStatus AUGraphIsOpen(AUGraph graph, Boolean* out_is_open);

/* Get whether the graph is initialised. */
KVX_PLATFORM_EXPORT OSStatus AUGraphIsInitialized(AUGraph graph, Boolean* out_is_initialized);

/* Get whether the output unit runs. Always allowed in a slice or I/O cycle. */
KVX_PLATFORM_EXPORT OSStatus AUGraphIsRunning(AUGraph graph, Boolean* out_is_running);

KVX_PLATFORM_END

#endif
