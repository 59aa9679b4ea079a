/* Window controls: class names, messages, notifications and structures, in C for hosts in any language.
 *
 * VrxRegisterControls(instance) registers the window classes; from then on CreateWindowEx and dialog templates make controls
 * by their class names. A control is driven by messages and tells its parent what the user did by WM_COMMAND (fields and lists,
 * codes as the system's lists and edit fields have them) and WM_NOTIFY (pictures, structures below). docs/controls.md
 * describes each control.
 *
 * Texts are UTF-16. Colours are COLORREF (0x00BBGGRR). A structure begins with its size in bytes, which the host sets;
 * a control copies what it is given. A message that is refused returns 0, or LB_ERR where it is one of the system's lists.
 * A number that equals VRX_UNSET (0.00001) means "not measured", is shown as nothing and left out of pictures.
 */
#ifndef CONTROLS_VRX_CONTROLS_H_
#define CONTROLS_VRX_CONTROLS_H_

#include <windows.h>

#include <commctrl.h>

#ifdef __cplusplus
extern "C" {
#endif

#ifdef VRX_CONTROLS_BUILDING
#define VRX_CONTROLS_API __declspec(dllexport)
#else
#define VRX_CONTROLS_API __declspec(dllimport)
#endif

/* Registers all window classes for the process. TRUE when they are there, also by an earlier call. `instance` is the module of
 * the host that uses them; NULL is the program. */
VRX_CONTROLS_API BOOL __stdcall VrxRegisterControls(HINSTANCE instance);

/* ---- Class names ---------------------------------------------------------------------------------------------------- */

#define VRX_CHECK_LIST L"VrxCheckList" /* list with check marks */
#define VRX_DRAG_LIST L"VrxDragList"   /* list whose entries are dragged, within it and to another one */
#define VRX_COLOR_LIST L"VrxColorList" /* list with colour bars */
#define VRX_EXCHANGE_LIST L"VrxExchangeList" /* available and chosen entries */
#define VRX_LIST_EDITOR L"VrxListEditor"     /* entries that are edited in place, added, removed, moved */
#define VRX_TREE L"VrxTree"                  /* tree with multiple selection */
#define VRX_COMBO L"VrxCombo"                /* drop-down list, with one column or several */
#define VRX_NUMERIC_EDIT L"VrxNumericEdit"   /* edit field for a number */
#define VRX_SCROLL_EDIT L"VrxScrollEdit"     /* the same with arrows */
#define VRX_TAB L"VrxTab"                    /* tab control with disabled tabs */
#define VRX_PICTURE L"VrxPicture"            /* bitmap in a frame */
#define VRX_PROGRESS L"VrxProgress"          /* progress bar */
#define VRX_PLOT L"VrxPlot"                  /* polylines over axes */
#define VRX_SWATCH L"VrxSwatch"              /* standard beside trial */
#define VRX_PLANE L"VrxPlane"                /* a*-b* differences with a tolerance */
#define VRX_LIGHTNESS L"VrxLightness"        /* L* differences with a tolerance */
#define VRX_CURVES L"VrxCurves"              /* spectral curves with their difference */
#define VRX_ANGLES L"VrxAngles"              /* values over measuring angles */
#define VRX_TREND L"VrxTrend"                /* total differences in order */

#define VRX_UNSET 1e-5

/* ---- All controls --------------------------------------------------------------------------------------------------- */

/* Sets the dots per inch that a control is laid out for (96 to VRX_MOST_DPI; wParam); 0: those of its screen. Returns 1, or 0. */
#define VRXM_SETDPI (WM_USER + 0x300)
#define VRX_MOST_DPI 1200
/* Draws the control into any device context: wParam HDC, lParam const RECT* in the units of the device, null: the size of the
 * window. Drawn controls and lists answer it, as they do WM_PRINTCLIENT; the picture follows the device's dots per inch, or those
 * that were set. On a printer it has the colours of paper, whatever the system's are. */
#define VRXM_DRAW (WM_USER + 0x301)

/* ---- Lists: check list, drag list, colour list --------------------------------------------------------------------------
 *
 * They answer the messages of the system's list box with their meaning there:
 *   LB_ADDSTRING LB_INSERTSTRING LB_DELETESTRING LB_RESETCONTENT LB_GETCOUNT LB_GETTEXT LB_GETTEXTLEN LB_SETITEMDATA
 *   LB_GETITEMDATA LB_SETCURSEL LB_GETCURSEL LB_SETSEL LB_GETSEL LB_GETSELCOUNT LB_GETSELITEMS LB_SELITEMRANGE
 *   LB_SETCARETINDEX LB_GETCARETINDEX LB_SETTOPINDEX LB_GETTOPINDEX LB_GETITEMRECT LB_GETITEMHEIGHT LB_ITEMFROMPOINT
 *   LB_FINDSTRING LB_FINDSTRINGEXACT LB_SETCOUNT
 * and send LBN_SELCHANGE, LBN_DBLCLK, LBN_SETFOCUS, LBN_KILLFOCUS by WM_COMMAND. Typing letters finds entries.
 * LB_SETCOUNT makes the list virtual: it keeps no texts and asks its parent for each row that it shows (VRXN_GETROW).
 */
#define VRXLS_MULTIPLE 0x0001 /* window style: more than one entry may be selected */
/* LBS_WANTKEYBOARDINPUT: the parent is asked first what a key does (WM_VKEYTOITEM). */

#define VRX_CHECK_OFF 0
#define VRX_CHECK_ON 1
#define VRX_CHECK_MIXED 2
#define VRXLM_SETCHECK (WM_USER + 0x310)  /* wParam entry, lParam VRX_CHECK_...: 1, or LB_ERR */
#define VRXLM_GETCHECK (WM_USER + 0x311)  /* wParam entry: VRX_CHECK_..., or LB_ERR */
#define VRXLM_SETCOLORS (WM_USER + 0x312) /* wParam entry, lParam const VRX_SWATCH_COLORS*: 1, or LB_ERR */
#define VRXLM_ENABLE \
  (WM_USER + 0x313) /* wParam entry, lParam BOOL: disabled entries are grey, their mark stays */
#define VRXLM_MOVE (WM_USER + 0x314) /* wParam gap (0 to count): moves the selected entries there */

#define VRXLN_CHECK 0x0310   /* WM_COMMAND: the user changed a check mark; the entry is current */
#define VRXLN_REORDER 0x0311 /* WM_COMMAND: the user moved entries */
#define VRXLN_RECEIVE \
  0x0312 /* WM_COMMAND: entries were dragged here from another drag list of the same parent */

/* The display colours of one or two samples, as XyzToDisplayRgb gives them. */
#define VRX_NO_TRIAL 0x01
#define VRX_STANDARD_OUT 0x02 /* the display cannot show the colour */
#define VRX_TRIAL_OUT 0x04
#define VRX_FRAMED 0x08 /* of a swatch pair: the trial within the standard */
typedef struct {
  UINT size;
  UINT flags;
  COLORREF standard, trial;
} VRX_SWATCH_COLORS;

/* What a virtual list asks for: code VRXN_GETROW of WM_NOTIFY. The parent fills the fields behind `row`; `text` has room for
 * 260 units and comes empty. */
#define VRXN_GETROW (0U - 2100U)
typedef struct {
  NMHDR header;
  int row;
  wchar_t text[260];
  int check;                /* VRX_CHECK_..., of a check list */
  VRX_SWATCH_COLORS colors; /* of a colour list; size 0: none */
  BOOL disabled;
} VRX_GETROW;

/* ---- Exchange list: entries are added by LB_ADDSTRING, LB_SETITEMDATA, LB_RESETCONTENT, LB_GETCOUNT, LB_GETTEXT ----------- */

#define VRXXM_SETCHOSEN \
  (WM_USER + 0x320) /* wParam count, lParam const int*: the chosen entries in order; 1, or 0 */
#define VRXXM_GETCHOSEN (WM_USER + 0x321) /* wParam room, lParam int* or null: returns how many are chosen */
#define VRXXN_CHANGE 0x0320               /* WM_COMMAND: the user chose, returned or moved entries */

/* ---- List editor: the messages of lists, and ----------------------------------------------------------------------------- */

#define VRXEM_BEGINEDIT (WM_USER + 0x330) /* wParam entry: opens the field on it; returns its window, or 0 */
#define VRXEM_ENDEDIT (WM_USER + 0x331)   /* wParam TRUE: takes the text, FALSE: drops it */
#define VRXEN_CHANGE 0x0330               /* WM_COMMAND: the user edited, added, removed or moved an entry */

/* ---- Tree ---------------------------------------------------------------------------------------------------------------- */

typedef struct {
  UINT size;
  int parent; /* -1: the first level */
  const wchar_t* text;
  UINT data;
} VRX_NODE;
#define VRXTM_RESET (WM_USER + 0x340)      /* removes all nodes */
#define VRXTM_ADD (WM_USER + 0x341)        /* lParam const VRX_NODE*: the node's number, or -1 */
#define VRXTM_EXPAND (WM_USER + 0x342)     /* wParam node, lParam BOOL: 1 when that changed something */
#define VRXTM_ISEXPANDED (WM_USER + 0x343) /* wParam node */
#define VRXTM_SELECT (WM_USER + 0x344)     /* wParam node, lParam BOOL */
#define VRXTM_ISSELECTED (WM_USER + 0x345) /* wParam node */
#define VRXTM_GETSELECTED \
  (WM_USER + 0x346)                        /* wParam room, lParam int* or null: how many nodes are selected */
#define VRXTM_GETCURRENT (WM_USER + 0x347) /* the node with the focus, or -1 */
#define VRXTM_GETDATA (WM_USER + 0x348)    /* wParam node */
#define VRXTM_GETROWRECT (WM_USER + 0x349) /* wParam node, lParam RECT*: 1 when its row is shown */
#define VRXTN_SELCHANGE LBN_SELCHANGE      /* WM_COMMAND */
#define VRXTN_EXPAND 0x0340                /* WM_COMMAND: the current node was expanded or collapsed */

/* ---- Combo: the messages of the system's combo box (CB_...), its notifications (CBN_...), and ------------------------------ */

/* wParam count (0 to 16), lParam const int*: widths of columns in 1/96 inch. Tabs in the texts part columns. Returns 1. */
#define VRXCM_SETCOLUMNS (WM_USER + 0x350)

/* ---- Number fields: the messages and notifications of the system's edit field, and ----------------------------------------- */

typedef struct {
  UINT size;
  int decimals; /* 0 to 15 */
  double lower, upper, increment;
  const wchar_t* unit; /* shown behind the number, or null */
} VRX_NUMBER_RANGE;
#define VRXNM_SETRANGE (WM_USER + 0x360) /* lParam const VRX_NUMBER_RANGE*: 1, or 0 */
/* lParam const double*: 1, or 0 for NaN and infinities. Rounded to the decimals; VRX_UNSET empties the field. */
#define VRXNM_SETVALUE (WM_USER + 0x361)
#define VRXNM_GETVALUE \
  (WM_USER + 0x362)                  /* lParam double*: 1, or 0 for a text that is no number of the range */
#define VRXNM_STEP (WM_USER + 0x363) /* wParam (int) increments: 1 when the value changed */
#define VRXNN_VALUE 0x0360   /* WM_COMMAND: the user set a new value (left the field, Enter, arrows, wheel) */
#define VRXNN_REFUSED 0x0361 /* WM_COMMAND: a key or the clipboard's text was refused */

/* ---- Tab control: the messages and notifications of the system's (TCM_..., TCN_...), and ----------------------------------- */

#define VRXBM_ENABLETAB (WM_USER + 0x370)    /* wParam tab, lParam BOOL: 1, or 0 */
#define VRXBM_ISTABENABLED (WM_USER + 0x371) /* wParam tab */

/* ---- Picture ----------------------------------------------------------------------------------------------------------- */

#define VRX_PICTURE_CENTRE 0
#define VRX_PICTURE_FIT 1
#define VRX_PICTURE_STRETCH 2
#define VRXPM_SETBITMAP \
  (WM_USER + 0x380) /* wParam VRX_PICTURE_..., lParam HBITMAP, which stays the host's; null: none */

/* ---- Progress bar ------------------------------------------------------------------------------------------------------ */

typedef struct {
  UINT size;
  int verdict; /* -1: none; 0 fail, 1 warning, 2 pass: colours the bar */
  double lower, upper, position;
  double secondsLeft;  /* negative: not known */
  const wchar_t* text; /* in place of the percentage, or null */
} VRX_PROGRESS_DATA;
#define VRXGM_SET (WM_USER + 0x390)    /* lParam const VRX_PROGRESS_DATA* */
#define VRXGM_SETPOS (WM_USER + 0x391) /* lParam const double*: the position alone */

/* ---- Pictures of data: VRXDM_SET with the structure of the class, a null structure for nothing ------------------------- */

#define VRXDM_SET (WM_USER + 0x3A0)        /* lParam const STRUCTURE*: 1, or 0 */
#define VRXDM_GETCURRENT (WM_USER + 0x3A1) /* the point that the user went to, or -1 */
#define VRXDM_SETCURRENT (WM_USER + 0x3A2) /* wParam point, (int)-1: none */
#define VRXDM_GETPOINT (WM_USER + 0x3A3) /* wParam point, lParam POINT*: where it is drawn; returns 1, or 0 */
#define VRXDM_GETCOUNT (WM_USER + 0x3A4) /* how many points can be gone to */

/* The user went to a point by mouse or keys: code of WM_NOTIFY. */
#define VRXN_POINT (0U - 2101U)
typedef struct {
  NMHDR header;
  int point; /* as VRXDM_GETPOINT counts; -1: none */
  int line;  /* the polyline, curve or series */
  int index; /* the element of it */
} VRX_POINT_NOTIFY;

typedef struct {
  double x, y;
} VRX_POINT;

#define VRX_LINE_DASHED 0x01
#define VRX_LINE_MARKED 0x02  /* a mark at every point */
#define VRX_LINE_NO_LINE 0x04 /* marks only */
typedef struct {
  const VRX_POINT* points;
  int count;
  UINT flags;
  COLORREF color;      /* CLR_DEFAULT: that of text */
  const wchar_t* name; /* or null */
  const int* verdicts; /* per point: 0 fail, 1 warning, 2 pass; or null */
} VRX_LINE;
typedef struct { /* VRX_PLOT */
  UINT size;
  int lineCount;
  const VRX_LINE* lines;
  double xLower, xUpper, yLower, yUpper; /* shown at least; equal ones: fitted to the points */
  const wchar_t *xHeading, *yHeading;
} VRX_PLOT_DATA;

/* Draws what VRX_PLOT shows of a structure into any device context without a window: a window of the host's, a bitmap, a
 * printer's page, a metafile. `box` in the units of the device; `dpi` dots per inch of them, 0: those of the device. TRUE,
 * or FALSE for a structure that VRXDM_SET refuses. */
VRX_CONTROLS_API BOOL __stdcall VrxDrawPlot(HDC device, const RECT* box, int dpi, const VRX_PLOT_DATA* data);

typedef struct { /* VRX_SWATCH */
  VRX_SWATCH_COLORS colors;
  const wchar_t *standardName, *trialName; /* or null */
} VRX_SWATCH_DATA;

typedef struct {
  double x, y, lightness; /* differences of the two chromatic components and of lightness */
  int verdict;            /* 0 fail, 1 warning, 2 pass */
  const wchar_t* name;
} VRX_TRIAL;
typedef struct { /* VRX_PLANE */
  UINT size;
  int limitCount, warningCount, trialCount;
  const VRX_POINT *limit, *warning; /* closed outlines */
  const VRX_TRIAL* trials;
  double reach; /* of the axes at least */
  const wchar_t *xHeading, *yHeading;
} VRX_PLANE_DATA;
typedef struct { /* VRX_LIGHTNESS */
  UINT size;
  int trialCount;
  const VRX_TRIAL* trials;
  double lower, upper, warningLower, warningUpper; /* VRX_UNSET: none */
  double reach;
  const wchar_t* heading;
} VRX_LIGHTNESS_DATA;

#define VRX_WITH_DIFFERENCE 0x01
typedef struct { /* VRX_CURVES */
  UINT size;
  UINT flags;
  int sampleCount, curveCount;
  double first, step;   /* nm */
  const double* values; /* curve by curve, percent; the first curve is the standard */
} VRX_CURVES_DATA;
typedef struct { /* VRX_ANGLES */
  UINT size;
  int angleCount, seriesCount;
  const double* angles; /* degrees, ascending */
  const double* values; /* series by series */
  const double* limits; /* per angle, or null */
  double warningFactor; /* part of the limit where the warning begins; 1: none */
  const wchar_t* heading;
} VRX_ANGLES_DATA;
typedef struct { /* VRX_TREND */
  UINT size;
  int count;
  const double* totals;
  double limit; /* VRX_UNSET: none */
  double warningFactor;
  const wchar_t* heading;
} VRX_TREND_DATA;

#ifdef __cplusplus
}
#endif

#endif /* CONTROLS_VRX_CONTROLS_H_ */
