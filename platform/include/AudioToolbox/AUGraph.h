/*
 * Graphs of audio units with one output unit. C.
 *
 * Order    new, add nodes, connect, open, set properties of the units, set callbacks, initialise, start;
 *          stop, uninitialise, close, dispose. Nodes, connections and callbacks added to an initialised graph
 *          take effect at its next initialisation. A call that requests the graph's present state returns
 *          noErr without effect.
 * Owner    the caller of NewAUGraph disposes the graph. The graph owns its units.
 * Errors   of every function. paramErr (-50): a NULL, disposed or unknown graph, or a required pointer is
 *          NULL. memFullErr (-108): no memory. kAUGraphErr_NodeNotFound: no such node. A refused call changes
 *          nothing.
 *          kAUGraphErr_CannotDoInCurrentContext: the call was made in a slice or I/O cycle, and would have to
 *          wait. Dispose, open, close, initialise and uninitialise always return this error there. Start and
 *          stop return it unless the slice is one of the graph's output unit. Other functions return it while
 *          another call on the graph is in progress.
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
 * Errors   memFullErr: also if 4,096 graphs are live. After an error *out_graph is NULL.
 */
KVX_PLATFORM_EXPORT OSStatus NewAUGraph(AUGraph* out_graph);

/*
 * Stop, uninitialise, close and free a graph. When the call returns, no callback of the graph runs.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus DisposeAUGraph(AUGraph graph);

/*
 * Add a node for the first audio unit that matches a description. In an open graph the unit is opened.
 * Shape    a zero field of the description matches anything. Node numbers count from 1; a number is never
 *          used for a second node.
 * Errors   kAUGraphErr_InvalidAudioUnit: no audio unit matches. kAUGraphErr_OutputNodeErr: the graph already
 *          has an output unit. Any error of opening the unit.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphAddNode(AUGraph graph, const AudioComponentDescription* description,
                                            AUNode* out_node);

/* Get the number of nodes in a graph. */
KVX_PLATFORM_EXPORT OSStatus AUGraphGetNodeCount(AUGraph graph, UInt32* out_count);

/*
 * Get the number of the node at an index. Indexes count from 0, in the order in which the nodes were added.
 * Errors   kAUGraphErr_NodeNotFound: index is not below the count.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphGetIndNode(AUGraph graph, UInt32 index, AUNode* out_node);

/*
 * Get the component description and the unit of a node. Either out-pointer may be NULL.
 * Shape    the description is that of the component, not the one passed to AUGraphAddNode. The unit is NULL
 *          until the graph is open.
 * Owner    the graph owns the unit until the graph is closed.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphNodeInfo(AUGraph graph, AUNode node,
                                             AudioComponentDescription* out_description, AudioUnit* out_unit);

/*
 * Connect an output element of a node to an input element of another node. Initialisation makes the
 * connection; the input element then has the format of the output element.
 * Errors   kAUGraphErr_InvalidConnection: the input element already has a connection or a callback.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphConnectNodeInput(AUGraph graph, AUNode source_node, UInt32 source_output,
                                                     AUNode dest_node, UInt32 dest_input);

/*
 * Set the render callback of an input element. A former callback is replaced; an inputProc of NULL removes
 * the callback. Initialisation passes the callback to the unit.
 * Owner    the struct is copied; its context stays the caller's.
 * Errors   kAUGraphErr_InvalidConnection: the input element has a connection.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphSetNodeInputCallback(AUGraph graph, AUNode dest_node, UInt32 dest_input,
                                                         const AURenderCallbackStruct* callback);

/*
 * Open the units of all nodes.
 * Errors   any error of opening a unit; afterwards no unit is open.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphOpen(AUGraph graph);

/*
 * Close all units, after stopping and uninitialising the graph. Nodes and connections stay.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphClose(AUGraph graph);

/*
 * Make all connections, from the sources to the output unit, and initialise the units that have a connection.
 * Errors   after an error all units are uninitialised. kAudioUnitErr_Uninitialized: the graph is not open.
 *          kAUGraphErr_InvalidConnection: the connections form a cycle. kAudioUnitErr_InvalidElement: a unit
 *          has no such input or output. kAudioUnitErr_FormatNotSupported: a unit refuses the format of its
 *          source. badComponentInstance: the caller has closed a unit. Any error of a unit's initialisation.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphInitialize(AUGraph graph);

/*
 * Uninitialise all units, after stopping the graph.
 * Errors   badComponentInstance: the graph is not open.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphUninitialize(AUGraph graph);

/*
 * Start the output unit. Starts are not counted, so one AUGraphStop ends several starts.
 * Errors   kAudioUnitErr_Uninitialized: the graph is not initialised, or the output unit has no input.
 *          kAUGraphErr_OutputNodeErr: the graph has no output unit. Any error of AudioOutputUnitStart.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphStart(AUGraph graph);

/*
 * Stop the output unit. When the call returns, no callback of the graph runs. After a call inside a callback,
 * the present slice is the last one.
 * Errors   only those listed in the head comment.
 */
KVX_PLATFORM_EXPORT OSStatus AUGraphStop(AUGraph graph);

/* Get whether the units of a graph are open. */
KVX_PLATFORM_EXPORT OSStatus AUGraphIsOpen(AUGraph graph, Boolean* out_is_open);

/* Get whether a graph is initialised. */
KVX_PLATFORM_EXPORT OSStatus AUGraphIsInitialized(AUGraph graph, Boolean* out_is_initialized);

/* Get whether the output unit of a graph runs. This call is always allowed in a slice or I/O cycle. */
KVX_PLATFORM_EXPORT OSStatus AUGraphIsRunning(AUGraph graph, Boolean* out_is_running);

KVX_PLATFORM_END

#endif
