// Runs in the page's own world in every frame, before the page's scripts. A click on a node outside
// the document passes through nothing where the watcher listens. Only a script can make one, by one
// of two calls, so both are made to tell the watcher first.
(() => {
  'use strict';
  const {apply} = Reflect;
  const {MouseEvent} = window;
  const {click} = HTMLElement.prototype;
  const {dispatchEvent} = EventTarget.prototype;
  const {getRootNode} = Node.prototype;

  const tell = (target) => {
    try {
      const root = apply(getRootNode, target, [{composed: true}]);
      if (root !== document) {
        apply(dispatchEvent, document, [new MouseEvent('qorixclick', {relatedTarget: root})]);
      }
    } catch (noNode) {
      // what is no node has no link
    }
  };

  HTMLElement.prototype.click = {
    click() {
      tell(this);
      return apply(click, this, arguments);
    },
  }.click;

  EventTarget.prototype.dispatchEvent = {
    dispatchEvent(event) {
      if (event instanceof MouseEvent) {
        tell(this);
      }
      return apply(dispatchEvent, this, arguments);
    },
  }.dispatchEvent;
})();
